#include "corvanectl/local_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "corvanectl/input.h"
#include "corvanectl/server_path.h"
#include "platform/file_desc.h"
#include "platform/io.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr mode_t rightsOfNewFiles = 0666;
constexpr mode_t allRights = 0777;

[[noreturn]] void fail(const char* what, const std::string& path, int error) {
    throw Exception(concatenate("cannot ", what, " '", path, "': ", std::strerror(error)));
}

mode_t rightsFor(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        return info.st_mode & allRights;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return rightsOfNewFiles & ~mask;
}

// A file under a name of its own, which goes with this object.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& beside)
        : name_(directoryPart(beside) + ".corvanectl-XXXXXX"), fd_(::mkstemp(name_.data())) {
        if (fd_ == -1) {
            fail("make a file beside", beside, errno);
        }
    }
    ~TemporaryFile() { ::unlink(name_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    TemporaryFile(TemporaryFile&&) = delete;
    TemporaryFile& operator=(TemporaryFile&&) = delete;

    // False with errno.
    bool write(std::string_view contents, mode_t rights) {
        return writeAll(fd_, contents) && ::fchmod(fd_, rights) == 0 && ::fsync(fd_) == 0 &&
               fd_.close() == 0;
    }

    bool takePlaceOf(const std::string& path) const {
        return ::rename(name_.c_str(), path.c_str()) == 0;
    }

    // Never replaces anything, except on file systems without hard links, if a file comes in the
    // moment between two calls.
    bool takeFreePlace(const std::string& path) const {
        if (::link(name_.c_str(), path.c_str()) == 0) {
            return true;
        }
        if (errno == EEXIST || ::access(path.c_str(), F_OK) == 0) {
            errno = EEXIST;
            return false;
        }
        return takePlaceOf(path);
    }

  private:
    std::string name_;
    FileDesc fd_;
};

bool isDirectory(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

struct Free {
    void operator()(char* text) const { ::free(text); }
};

}  // namespace

std::string readLocalFile(const std::string& path) {
    const FileDesc file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file == -1) {
        fail("open", path, errno);
    }
    return readInput(file, "'" + path + "'");
}

std::string localTarget(const std::string& path, const std::string& name, Existing existing) {
    const bool isInside = path.empty() || endsWith(path, "/") || isDirectory(path);
    std::string target = path.empty() ? name : isInside ? inDirectory(path, name) : path;
    struct stat info {};
    if (::lstat(target.c_str(), &info) != 0) {
        return target;
    }
    if (existing == Existing::Refused) {
        throw Exception("'" + target + "' is there already, --force replaces it");
    }
    const std::unique_ptr<char, Free> real(::realpath(target.c_str(), nullptr));
    if (real == nullptr || ::stat(target.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        throw Exception("'" + target + "' is no file that can be replaced");
    }
    return real.get();
}

void writeLocalFile(const std::string& path, std::string_view contents, Existing existing) {
    TemporaryFile file(path);
    if (!file.write(contents, rightsFor(path))) {
        fail("write", path, errno);
    }
    const bool isThere =
        existing == Existing::Replaced ? file.takePlaceOf(path) : file.takeFreePlace(path);
    if (!isThere) {
        fail("make", path, errno);
    }
}

}  // namespace corvane::ctl
