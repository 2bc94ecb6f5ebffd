// "corvanectl log": the server's log, and what is added to it.
#pragma once

#include <string>
#include <string_view>

#include "corvanectl/invocation.h"
#include "corvanectl/local/log_file.h"
#include "corvanectl/local/log_view.h"

namespace corvane::ctl::local {

/// The shown ones of whole lines, for a terminal in colours unless NO_COLOR is set.
std::string shownLines(std::string_view lines, LogFilter& filter, bool onTerminal, bool coloured);

/// Reads a log bit by bit, through its truncation and its replacement by another file.
class LogFollower {
  public:
    explicit LogFollower(std::string path) : path_(std::move(path)) {}

    /// The whole lines since the last call; at most 1 MiB at once, so that the
    /// next call may have more of them. A line that is longer comes in pieces.
    std::string next();

  private:
    std::string path_;
    LogPosition read_;
};

/// Returns 0, with -f when nobody reads its output any more. Throws Exception when there is no log.
int log(const Invocation& invocation);

}  // namespace corvane::ctl::local
