#include "fileutil/copy_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "fileutil/file_errors.h"
#include "fileutil/file_operations.h"
#include "fileutil/open_directory.h"
#include "fileutil/paths.h"
#include "fileutil/reach.h"
#include "log/log.h"
#include "platform/io.h"
#include "platform/system.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

constexpr std::size_t loopBlock = std::size_t{128} * 1024;
// What is copied, and for a move brought to the disk, between two looks at the signals: a fraction
// of a second's work for a disk, a few seconds' for a slow stick.
constexpr std::size_t step = std::size_t{16} * 1024 * 1024;
// Below this size the kernel's copying costs more calls than it saves work.
constexpr off_t kernelCopyPays = off_t{64} * 1024;
constexpr mode_t newFileMode = 0777;

enum class Outcome { Done, ReadFailed, WriteFailed };

// The target of a copy that may take long.
class Sink {
  public:
    Sink(int fd, Durability durability) : fd_(fd), durability_(durability) {}

    // Asked when there is a further block, never after the last one: a copy that is complete stays.
    // False with errno.
    bool mayGoOn() const { return !isBegun_ || !interrupted(); }

    // Takes note of bytes that the kernel has put there. False with errno.
    bool took(std::size_t count) {
        isBegun_ = true;
        pending_ += count;
        return pending_ < step || toDisk();
    }

    bool write(std::string_view bytes) {
        return mayGoOn() && writeAll(fd_, bytes) && took(bytes.size());
    }

    bool toDisk() {
        pending_ = 0;
        return durability_ == Durability::Handed || platform::syncToDisk(fd_) == 0;
    }

  private:
    int fd_;
    Durability durability_;
    bool isBegun_ = false;
    std::size_t pending_ = 0;
};

// Lets the kernel copy up to `size` bytes. What it leaves, also after an error, is the loop's: that
// tells whether reading or writing fails. False with errno when the copy must not go on.
bool copyByKernel(int from, int to, off_t size, Sink& sink) {
    for (off_t copied = 0; copied < size;) {
        if (!sink.mayGoOn()) {
            return false;
        }
        const ssize_t count = platform::copyInKernel(from, to, step);
        if (count <= 0) {
            return true;
        }
        if (!sink.took(static_cast<std::size_t>(count))) {
            return false;
        }
        copied += count;
    }
    return true;
}

Outcome copyByLoop(int from, Sink& sink) {
    std::array<char, loopBlock> block;
    while (true) {
        const ssize_t count = readSome(from, block);
        if (count <= 0) {
            return count == 0 ? Outcome::Done : Outcome::ReadFailed;
        }
        if (!sink.write({block.data(), static_cast<std::size_t>(count)})) {
            return Outcome::WriteFailed;
        }
    }
}

Outcome copyAll(const OpenedFile& from, const OpenedFile& to, const FilePlace& dst,
                Durability durability) {
    Sink sink(to.fd, durability);
    const bool isRegular = S_ISREG(to.info.st_mode);
    if (isRegular && from.info.st_size > kernelCopyPays) {
        flushLog();
        if (!copyByKernel(from.fd, to.fd, from.info.st_size, sink)) {
            return Outcome::WriteFailed;
        }
    }
    if (const Outcome outcome = copyByLoop(from.fd, sink); outcome != Outcome::Done) {
        return outcome;
    }
    if (!isRegular) {
        return letCloseDrain(to.fd) ? Outcome::Done : Outcome::WriteFailed;
    }
    const bool isSafe =
        durability == Durability::Handed || (sink.toDisk() && directoryToDisk(dst.name));
    return isSafe ? Outcome::Done : Outcome::WriteFailed;
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

void copyUnlessSame(const OpenedFile& from, OpenedFile to, const FilePlace& src,
                    const FilePlace& dst) {
    if (!isSameFile(from.info, to.info)) {
        copyContents(from, std::move(to), src, dst, Durability::Handed);
    }
}

}  // namespace

std::string targetOf(const std::string& src, const std::string& dst) {
    return isDirectory(dst) ? correctDirectoryPath(dst) + getFileName(src) : dst;
}

OpenedFile openSource(const FilePlace& src) {
    if (!isWithinReach(src.directory, src.name)) {
        throw fileError("open src", src.path, EACCES);
    }
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
    if (interrupted()) {
        throw fileError("open dst", dst.path, EINTR);
    }
    if (!isWithinReach(dst.directory, dst.name)) {
        throw fileError("open dst", dst.path, EACCES);
    }
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

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void copyContents(const OpenedFile& from, OpenedFile to, const FilePlace& src, const FilePlace& dst,
                  Durability durability) {
    Outcome outcome = copyAll(from, to, dst, durability);
    int error = errno;
    if (to.fd.close() != 0 && outcome == Outcome::Done) {
        error = errno;
        outcome = Outcome::WriteFailed;
    }
    if (outcome == Outcome::Done) {
        return;
    }
    if (S_ISREG(to.info.st_mode)) {
        ::unlinkat(dst.directory, dst.name.c_str(), 0);
    }
    throw fileError(outcome == Outcome::ReadFailed ? "read src" : "write dst",
                    outcome == Outcome::ReadFailed ? src.path : dst.path, error);
}

bool directoryToDisk(const std::string& localPath) {
    struct Free {
        void operator()(char* text) const { ::free(text); }
    };
    // What a link leads to lies in another directory than the link.
    const std::unique_ptr<char, Free> real(::realpath(localPath.c_str(), nullptr));
    const std::string path = real == nullptr ? localPath : real.get();
    const std::string parent = path.substr(0, path.rfind(SEPARATOR_DIR) + 1);
    const FileDesc directory =
        openDirectory(parent.empty() ? DIR_THIS : parent, DirectoryAccess::Read);
    return directory == -1 ? errno == EACCES || errno == EPERM
                           : platform::syncToDisk(directory) == 0;
}

void copyFileToOrInto(const FilePlace& src, FilePlace dst) {
    const OpenedFile from = openSource(src);
    OpenedFile to = openTargetOrInside(dst, getFileName(src.path));
    copyUnlessSame(from, std::move(to), src, dst);
}

void copyFile(const std::string& src, const std::string& dst) {
    const FilePlace source = placeOf(src);
    const FilePlace target = placeOf(targetOf(src, dst));
    const OpenedFile from = openSource(source);
    copyUnlessSame(from, openTarget(target, Target::File), source, target);
}

}  // namespace corvane
