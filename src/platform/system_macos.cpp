#include <fcntl.h>
#include <malloc/malloc.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

#include "platform/system.h"

namespace corvane::platform {

int acceptConnection(int listener, sockaddr_in& peer) {
    socklen_t length = sizeof peer;
    const int sock = ::accept(listener, reinterpret_cast<sockaddr*>(&peer), &length);
    if (sock == -1) {
        return -1;
    }
    const int on = 1;
    static_cast<void>(::setsockopt(sock, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on));
    static_cast<void>(::fcntl(sock, F_SETFD, FD_CLOEXEC));
    // BSD systems hand the listener's O_NONBLOCK on to the connection.
    static_cast<void>(::fcntl(sock, F_SETFL, ::fcntl(sock, F_GETFL) & ~O_NONBLOCK));
    return sock;
}

void simplifyCongestionControl(int /*listener*/) {}  // the system decides

int sendFlags() { return 0; }  // SO_NOSIGPIPE is set on every connection

void closeDescriptorsFrom(int first) {
    const int size = ::getdtablesize();
    for (int fd = first; fd < size; ++fd) {
        ::close(fd);
    }
}

ssize_t copyInKernel(int /*from*/, int /*to*/, std::size_t /*count*/) {
    // fcopyfile and clonefile replace the whole target; a longer target must keep its tail here.
    errno = ENOSYS;
    return -1;
}

std::int64_t coarseMilliseconds() {
    return static_cast<std::int64_t>(::clock_gettime_nsec_np(CLOCK_MONOTONIC_RAW_APPROX) /
                                     1'000'000);
}

void keepFreedMemory() {}  // the system's allocator decides

void returnFreedMemory() { static_cast<void>(::malloc_zone_pressure_relief(nullptr, 0)); }

int searchFlag() { return O_SEARCH; }

// The number counts the calls of tmpnam(3) in a process; the random letters are enough here.
const char* const temporaryNamePattern = "/var/tmp/tmp.0.XXXXXX";

}  // namespace corvane::platform
