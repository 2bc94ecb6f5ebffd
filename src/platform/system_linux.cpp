#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

#include "platform/system.h"

namespace corvane::platform {

int acceptConnection(int listener, sockaddr_in& peer) {
    socklen_t length = sizeof peer;
    return ::accept4(listener, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC);
}

int sendFlags() { return MSG_NOSIGNAL; }

ssize_t discardReceived(int sock, std::size_t count) {
    // For TCP, MSG_TRUNC drops the bytes without copying them (tcp(7)); other socket types, such as
    // the socket pairs of tests, need a buffer to read into.
    const ssize_t dropped = ::recv(sock, nullptr, count, MSG_TRUNC | MSG_DONTWAIT);
    if (dropped >= 0) {
        return dropped;
    }
    char scratch[16 * 1024];
    std::size_t total = 0;
    while (total < count) {
        const ssize_t got =
            ::recv(sock, scratch, std::min(count - total, sizeof scratch), MSG_DONTWAIT);
        if (got <= 0) {
            return total > 0 ? static_cast<ssize_t>(total) : got;
        }
        total += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(total);
}

void closeDescriptorsFrom(int first) {
    if (::close_range(static_cast<unsigned>(first), UINT_MAX, 0) == 0) {
        return;
    }
    const long size = ::sysconf(_SC_OPEN_MAX);  // kernels before 5.9
    for (long fd = first; fd < size; ++fd) {
        ::close(static_cast<int>(fd));
    }
}

ssize_t copyInKernel(int from, int to, std::size_t count) {
    return ::copy_file_range(from, nullptr, to, nullptr, count, 0);
}

int searchFlag() { return O_PATH; }

}  // namespace corvane::platform
