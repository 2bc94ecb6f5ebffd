// Reading the server's log: only regular files, and never more than is asked for.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>

namespace corvane::ctl {

/// A place in a file that may be replaced or truncated meanwhile.
struct LogPosition {
    dev_t device = 0;
    ino_t file = 0;
    off_t offset = 0;
};

/// The end of the file; nothing when there is no regular file of this path.
std::optional<LogPosition> endOfLog(const std::string& path);

/// The whole lines that follow a position, at most the last `most` bytes of them: all of them when
/// the file is another one or shorter than it was. Nothing, with errno, when it cannot be read.
std::optional<std::string> readLog(const std::string& path, const LogPosition& from,
                                   std::size_t most);

/// The bytes that follow `at`, which is moved behind them, at most the first `most`; from the
/// beginning as with readLog(). Nothing, with errno, when the file cannot be read.
std::optional<std::string> readNext(const std::string& path, LogPosition& at, std::size_t most);

}  // namespace corvane::ctl
