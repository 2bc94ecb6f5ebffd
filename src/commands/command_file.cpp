#include "commands/command_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "fileutil/reach.h"
#include "platform/io.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

constexpr mode_t newFileMode = 0666;
// What is written between two looks at the signals.
constexpr std::size_t blockSize = std::size_t{1024} * 1024;
constexpr std::size_t streamBuffer = 4096;

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

int CommandFile::openForWriting() { return open(O_RDWR | O_CREAT | O_TRUNC, mayNotBeOverwritten); }

int CommandFile::open(int flags, bool (*refused)(mode_t)) {
    if (!isWithinReach(AT_FDCWD, path_)) {
        return EACCES;
    }
    OpenedFile opened = openGuarded(AT_FDCWD, path_, flags, newFileMode);
    if (opened.fd == -1) {
        return errno;
    }
    if (refused(opened.info.st_mode)) {
        return EINVAL;
    }
    file_ = std::move(opened);
    return 0;
}

// A stop does not end it at a regular file: the old contents are gone, and the new ones at hand.
bool CommandFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::string_view block = bytes.substr(0, blockSize);
        if (!writeAll(file_.fd, block)) {
            const auto reached = std::max(
                static_cast<std::size_t>(std::max<off_t>(::lseek(file_.fd, 0, SEEK_CUR), 0)),
                written_);
            const std::size_t taken = (reached / streamBuffer + 1) * streamBuffer;
            written_ += std::min(taken - written_, bytes.size());
            return false;
        }
        written_ += block.size();
        bytes.remove_prefix(block.size());
        if (!bytes.empty()) {
            deliverPendingSignals();
        }
    }
    return true;
}

bool CommandFile::finishWriting() {
    return !S_ISCHR(file_.info.st_mode) || letCloseDrain(file_.fd);
}

int CommandFile::close() {
    if (file_.fd == -1) {
        return 0;
    }
    return logClosed(file_.fd.close() == 0 ? 0 : errno, path_, log_);
}

}  // namespace corvane
