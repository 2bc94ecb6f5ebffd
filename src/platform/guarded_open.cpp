#include "platform/guarded_open.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>

#include "platform/open_flags.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

// The system does not tell when a lease ends.
constexpr std::chrono::milliseconds betweenAttempts{10};

bool isRegularFile(int directory, const std::string& name) {
    struct stat info {};
    return ::fstatat(directory, name.c_str(), &info, 0) == 0 && S_ISREG(info.st_mode);
}

// Waiting inside open(2) would keep signals out, and would wait for ever for the other end of a
// pipe that has taken the place of the file meanwhile.
int openWhenReleased(int directory, const std::string& name, int flags, mode_t mode) {
    while (true) {
        const int fd = ::openat(directory, name.c_str(), flags, mode);
        if (fd != -1 || errno != EAGAIN) {
            return fd;
        }
        if (!isRegularFile(directory, name)) {
            errno = EAGAIN;
            return -1;
        }
        waitForSockets(0, nullptr, nullptr, std::chrono::steady_clock::now() + betweenAttempts);
        if (stopRequested()) {
            errno = EINTR;
            return -1;
        }
    }
}

}  // namespace

OpenedFile openGuarded(int directory, const std::string& name, int flags, mode_t mode) {
    OpenedFile file{FileDesc(openWhenReleased(directory, name, flags | guardedOpen, mode))};
    if (file.fd != -1 && ::fstat(file.fd, &file.info) != 0) {
        const int error = errno;
        file.fd.close();
        errno = error;
    }
    return file;
}

}  // namespace corvane
