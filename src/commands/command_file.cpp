#include "commands/command_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "fileutil/file_desc.h"
#include "fileutil/open_flags.h"

namespace corvane {
namespace {

constexpr mode_t newFileMode = 0666;

bool mayNeverEnd(mode_t mode) { return !S_ISREG(mode) && !S_ISDIR(mode); }

bool mayNotBeOverwritten(mode_t mode) { return S_ISFIFO(mode) || S_ISSOCK(mode) || S_ISBLK(mode); }

}  // namespace

int closeFile(FILE* file, const std::string& path, const CommandLog& log) {
    if (file == nullptr) {
        return 0;
    }
    const int result = std::fclose(file) == 0 ? 0 : errno;
    log.debug(": close (%d) file '%s'", result, path.c_str());
    return result;
}

int CommandFile::openForReading() {
    return adopt(::open(path_.c_str(), O_RDONLY | guardedOpen), "rb", mayNeverEnd);
}

int CommandFile::openForWriting() {
    return adopt(::open(path_.c_str(), O_RDWR | O_CREAT | O_TRUNC | guardedOpen, newFileMode), "w+",
                 mayNotBeOverwritten);
}

int CommandFile::adopt(int fd, const char* mode, bool (*refused)(mode_t)) {
    FileDesc opened(fd);
    if (opened == -1 || ::fstat(opened, &info_) != 0) {
        return errno;
    }
    if (refused(info_.st_mode)) {
        return EINVAL;
    }
    file_ = ::fdopen(opened, mode);
    if (file_ == nullptr) {
        return errno;
    }
    static_cast<void>(opened.release());
    return 0;
}

int CommandFile::close() { return closeFile(std::exchange(file_, nullptr), path_, log_); }

}  // namespace corvane
