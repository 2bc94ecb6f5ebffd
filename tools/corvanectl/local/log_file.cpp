#include "corvanectl/local/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/guarded_open.h"
#include "platform/io.h"

namespace corvane::ctl {

std::optional<LogPosition> endOfLog(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return LogPosition{info.st_dev, info.st_ino, info.st_size};
}

std::optional<std::string> readLog(const std::string& path, const LogPosition& from,
                                   std::size_t most) {
    LogPosition at = from;
    return readOn(path, at, most);
}

std::optional<std::string> readOn(const std::string& path, LogPosition& at, std::size_t most) {
    const OpenedFile file = openGuarded(AT_FDCWD, path, O_RDONLY);
    if (file.fd == -1) {
        return std::nullopt;
    }
    if (!S_ISREG(file.info.st_mode)) {
        errno = EINVAL;
        return std::nullopt;
    }
    const bool isSame = file.info.st_dev == at.device && file.info.st_ino == at.file &&
                        file.info.st_size >= at.offset;
    const off_t begin = isSame ? at.offset : 0;
    const auto size = static_cast<std::size_t>(file.info.st_size - begin);
    const std::size_t wanted = std::min(size, most);
    // One byte more shows whether the first line is a whole one.
    const off_t start = file.info.st_size - static_cast<off_t>(wanted);
    const off_t before = start > 0 ? 1 : 0;
    std::string text(wanted + static_cast<std::size_t>(before), '\0');
    if (::lseek(file.fd, start - before, SEEK_SET) == -1) {
        return std::nullopt;
    }
    const ssize_t got = readAll(file.fd, text);
    if (got == -1) {
        return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(got));
    at = {file.info.st_dev, file.info.st_ino, start - before + static_cast<off_t>(got)};
    if (before == 1) {
        const std::size_t lineEnd = text.find('\n');
        text.erase(0, lineEnd == std::string::npos ? text.size() : lineEnd + 1);
    }
    return text;
}

}  // namespace corvane::ctl
