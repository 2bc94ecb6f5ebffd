#include "fileutil/copy_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <utility>

#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "log/log.h"
#include "platform/guarded_open.h"
#include "platform/io.h"
#include "platform/system.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::size_t blockSize = std::size_t{128} * 1024;
constexpr std::size_t kernelBlock = std::size_t{256} * 1024 * 1024;
// Below this size the kernel's copying costs more calls than it saves work.
constexpr off_t kernelCopyPays = off_t{64} * 1024;
constexpr mode_t newFileMode = 0777;

IOException fileError(const char* action, const std::string& path, int error) {
    return {format("%s file '%s' error", action, path.c_str()), error};
}

OpenedFile openSource(const FilePlace& src) {
    OpenedFile file = openGuarded(src.directory, src.name, O_RDONLY);
    if (file.fd == -1) {
        throw fileError("open src", src.path, errno);
    }
    if (S_ISDIR(file.info.st_mode)) {
        // The error of reading it, which must not wait until the target has been touched.
        throw fileError("read src", src.path, EISDIR);
    }
    if (!S_ISREG(file.info.st_mode)) {
        throw fileError("open src", src.path, EINVAL);
    }
    return file;
}

OpenedFile openTarget(const FilePlace& dst, Target target) {
    OpenedFile file = openGuarded(dst.directory, dst.name, O_WRONLY | O_CREAT, newFileMode);
    if (file.fd == -1) {
        throw fileError("open dst", dst.path, errno);
    }
    const bool refused = target == Target::RegularFile
                             ? !S_ISREG(file.info.st_mode)
                             : S_ISFIFO(file.info.st_mode) || S_ISSOCK(file.info.st_mode);
    if (refused) {
        throw fileError("open dst", dst.path, EINVAL);
    }
    return file;
}

// Opens the target; where that is a directory, `dst` becomes the place in it under `name`.
OpenedFile openTargetOrInside(FilePlace& dst, const std::string& name) {
    try {
        return openTarget(dst, Target::File);
    } catch (const IOException& e) {
        if (e.code != EISDIR) {
            throw;
        }
    }
    dst.name = slashPath(dst.name) + name;
    dst.path = slashPath(dst.path) + name;
    return openTarget(dst, Target::File);
}

enum class Outcome { Done, ReadFailed, WriteFailed };

// Lets the kernel copy as much as it will. What it leaves, also after an error, is the loop's: that
// tells whether reading or writing fails.
void copyByKernel(int from, int to) {
    while (platform::copyInKernel(from, to, kernelBlock) > 0) {
    }
}

Outcome copyByLoop(int from, int to) {
    std::array<char, blockSize>
        block;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
    while (true) {
        const ssize_t count = readSome(from, block);
        if (count == 0) {
            return Outcome::Done;
        }
        if (count < 0) {
            return Outcome::ReadFailed;
        }
        if (!writeAll(to, {block.data(), static_cast<std::size_t>(count)})) {
            return Outcome::WriteFailed;
        }
    }
}

Outcome copyContents(const OpenedFile& from, OpenedFile& to) {
    if (S_ISREG(to.info.st_mode) && from.info.st_size > kernelCopyPays) {
        flushLog();
        copyByKernel(from.fd, to.fd);
    }
    Outcome outcome = copyByLoop(from.fd, to.fd);
    const int error = errno;
    if (to.fd.close() != 0 && outcome == Outcome::Done) {
        return Outcome::WriteFailed;
    }
    errno = error;
    return outcome;
}

// Copies between two open files, of which both places are known. False when they are the same.
bool copyOpened(const OpenedFile& from, OpenedFile to, const FilePlace& src, const FilePlace& dst) {
    if (from.info.st_dev == to.info.st_dev && from.info.st_ino == to.info.st_ino) {
        return false;
    }
    const Outcome outcome = copyContents(from, to);
    if (outcome == Outcome::Done) {
        return true;
    }
    const int error = errno;
    if (S_ISREG(to.info.st_mode)) {
        ::unlinkat(dst.directory, dst.name.c_str(), 0);
    }
    throw outcome == Outcome::ReadFailed ? fileError("read src", src.path, error)
                                         : fileError("write dst", dst.path, error);
}

}  // namespace

bool copyFileAt(const FilePlace& src, const FilePlace& dst, Target target) {
    const OpenedFile from = openSource(src);
    return copyOpened(from, openTarget(dst, target), src, dst);
}

void copyFileToOrInto(const FilePlace& src, FilePlace dst) {
    const OpenedFile from = openSource(src);
    OpenedFile to = openTargetOrInside(dst, getFileName(src.path));
    copyOpened(from, std::move(to), src, dst);
}

}  // namespace corvane
