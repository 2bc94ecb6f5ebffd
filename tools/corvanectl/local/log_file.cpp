#include "corvanectl/local/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/guarded_open.h"
#include "platform/io.h"

namespace corvane::ctl {
namespace {

// Without a descriptor, with errno, for what is no regular file.
OpenedFile openLog(const std::string& path) {
    OpenedFile file = openGuarded(AT_FDCWD, path, O_RDONLY);
    if (file.fd != -1 && !S_ISREG(file.info.st_mode)) {
        file.fd = FileDesc();
        errno = EINVAL;
    }
    return file;
}

// Where to go on: at the beginning of another file, and of one that has become shorter.
off_t beginIn(const OpenedFile& file, const LogPosition& at) {
    const bool isSame = file.info.st_dev == at.device && file.info.st_ino == at.file &&
                        file.info.st_size >= at.offset;
    return isSame ? at.offset : 0;
}

std::optional<std::string> readAt(const OpenedFile& file, off_t begin, std::size_t size) {
    std::string text(size, '\0');
    const ssize_t got = ::lseek(file.fd, begin, SEEK_SET) == -1 ? -1 : readAll(file.fd, text);
    if (got == -1) {
        return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(got));
    return text;
}

}  // namespace

std::optional<LogPosition> endOfLog(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return LogPosition{info.st_dev, info.st_ino, info.st_size};
}

std::optional<std::string> readLog(const std::string& path, const LogPosition& from,
                                   std::size_t most) {
    const OpenedFile file = openLog(path);
    if (file.fd == -1) {
        return std::nullopt;
    }
    const off_t end = file.info.st_size;
    const off_t begin = std::max(beginIn(file, from), end - static_cast<off_t>(most));
    // One byte more shows whether the first line is a whole one.
    const off_t before = begin > 0 ? 1 : 0;
    std::optional<std::string> text =
        readAt(file, begin - before, static_cast<std::size_t>(end - begin + before));
    if (text && before == 1) {
        const std::size_t lineEnd = text->find('\n');
        text->erase(0, lineEnd == std::string::npos ? text->size() : lineEnd + 1);
    }
    return text;
}

std::optional<std::string> readNext(const std::string& path, LogPosition& at, std::size_t most) {
    const OpenedFile file = openLog(path);
    if (file.fd == -1) {
        return std::nullopt;
    }
    const off_t begin = beginIn(file, at);
    const auto size = static_cast<std::size_t>(file.info.st_size - begin);
    std::optional<std::string> text = readAt(file, begin, std::min(size, most));
    if (text) {
        at = {file.info.st_dev, file.info.st_ino, begin + static_cast<off_t>(text->size())};
    }
    return text;
}

}  // namespace corvane::ctl
