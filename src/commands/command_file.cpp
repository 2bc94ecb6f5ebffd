#include "commands/command_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/file_desc.h"
#include "platform/open_flags.h"

namespace corvane {
namespace {

constexpr mode_t newFileMode = 0666;

bool mayNeverEnd(mode_t mode) { return !S_ISREG(mode) && !S_ISDIR(mode); }

bool mayNotBeOverwritten(mode_t mode) { return S_ISFIFO(mode) || S_ISSOCK(mode) || S_ISBLK(mode); }

int logClosed(int result, const std::string& path, const CommandLog& log) {
    log.debug(": close (%d) file '%s'", result, path.c_str());
    return result;
}

}  // namespace

int closeFile(FILE* file, const std::string& path, const CommandLog& log) {
    if (file == nullptr) {
        return 0;
    }
    return logClosed(std::fclose(file) == 0 ? 0 : errno, path, log);
}

int CommandFile::openForReading() { return open(O_RDONLY, mayNeverEnd); }

int CommandFile::openForWriting() {
    if (const int error = open(O_RDWR | O_CREAT | O_TRUNC, mayNotBeOverwritten); error != 0) {
        return error;
    }
    file_ = ::fdopen(opened_, "w+");
    if (file_ == nullptr) {
        const int error = errno;
        opened_.close();
        return error;
    }
    static_cast<void>(opened_.release());
    return 0;
}

int CommandFile::open(int flags, bool (*refused)(mode_t)) {
    FileDesc opened(::open(path_.c_str(), flags | guardedOpen, newFileMode));
    if (opened == -1 || ::fstat(opened, &info_) != 0) {
        return errno;
    }
    if (refused(info_.st_mode)) {
        return EINVAL;
    }
    opened_ = std::move(opened);
    return 0;
}

int CommandFile::close() {
    if (opened_ != -1) {
        return logClosed(opened_.close() == 0 ? 0 : errno, path_, log_);
    }
    return closeFile(std::exchange(file_, nullptr), path_, log_);
}

}  // namespace corvane
