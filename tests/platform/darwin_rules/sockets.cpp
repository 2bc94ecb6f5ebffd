// Sockets: what the kernel does differently when it sends, accepts and tells options.
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <ctime>

#include "platform/darwin_rules/rules.h"

namespace {

using darwin_rules::hold;
using darwin_rules::next;

// Sending looks at the socket's own O_NONBLOCK only.
int withoutDontWait(int flags) { return hold() ? flags & ~MSG_DONTWAIT : flags; }

// The other end has reset the connection: nothing is known of it any more.
bool isReset(int sock) {
    tcp_info info{};
    socklen_t length = sizeof info;
    return ::getsockopt(sock, IPPROTO_TCP, TCP_INFO, &info, &length) == 0 &&
           info.tcpi_state == TCP_CLOSE;
}

bool isNonBlocking(int sock) { return (::fcntl(sock, F_GETFL) & O_NONBLOCK) != 0; }

// Of two connections that were reset before they were accepted, one comes without an address and
// one not at all: the kernel does either, as the reset comes before or within the call.
int acceptedAfterReset(int sock, socklen_t* length) {
    static bool aborts = false;
    aborts = !aborts;
    if (aborts) {
        ::close(sock);
        errno = ECONNABORTED;
        return -1;
    }
    if (length != nullptr) {
        *length = 0;
    }
    return sock;
}

// The connection has left the queue when no descriptor is found for it.
void dropNext(int listener) {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlim_t one = before.rlim_cur + 1;
    const rlimit more{one, std::max(one, before.rlim_max)};  // more than allowed: root's right
    ::setrlimit(RLIMIT_NOFILE, &more);
    static const auto accept4 = next<decltype(&::accept4)>("accept4");
    if (const int dropped = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC); dropped != -1) {
        ::close(dropped);
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
}

int acceptAsDarwin(int listener, sockaddr* peer, socklen_t* length, int flags) {
    static const auto accept4 = next<decltype(&::accept4)>("accept4");
    sockaddr_in address{};
    socklen_t size = sizeof address;
    const int sock = accept4(listener, reinterpret_cast<sockaddr*>(&address), &size, flags);
    if (sock == -1) {
        if (errno == EMFILE) {
            dropNext(listener);
            errno = EMFILE;
        }
        return -1;
    }
    if (isNonBlocking(listener)) {
        ::fcntl(sock, F_SETFL, ::fcntl(sock, F_GETFL) | O_NONBLOCK);
    }
    if (isReset(sock)) {
        return acceptedAfterReset(sock, length);
    }
    if (peer != nullptr && length != nullptr && *length >= size) {
        *reinterpret_cast<sockaddr_in*>(peer) = address;
        *length = size;
    }
    return sock;
}

}  // namespace

extern "C" {

int accept4(int sock, sockaddr* peer, socklen_t* length, int flags) {
    static const auto real = next<decltype(&accept4)>("accept4");
    return hold() ? acceptAsDarwin(sock, peer, length, flags) : real(sock, peer, length, flags);
}

int accept(int sock, sockaddr* peer, socklen_t* length) { return accept4(sock, peer, length, 0); }

ssize_t send(int sock, const void* bytes, std::size_t count, int flags) {
    static const auto real = next<decltype(&send)>("send");
    return real(sock, bytes, count, withoutDontWait(flags));
}

ssize_t sendto(int sock, const void* bytes, std::size_t count, int flags, const sockaddr* to,
               socklen_t length) {
    static const auto real = next<decltype(&sendto)>("sendto");
    return real(sock, bytes, count, withoutDontWait(flags), to, length);
}

ssize_t sendmsg(int sock, const msghdr* message, int flags) {
    static const auto real = next<decltype(&sendmsg)>("sendmsg");
    return real(sock, message, withoutDontWait(flags));
}

// Before macOS 10.15 three years were the longest time to wait.
int pselect(int end, fd_set* readable, fd_set* writable, fd_set* urgent, const timespec* timeout,
            const sigset_t* mask) {
    static const auto real = next<decltype(&pselect)>("pselect");
    constexpr time_t longest = 100'000'000;
    if (hold() && timeout != nullptr && timeout->tv_sec > longest) {
        errno = EINVAL;
        return -1;
    }
    return real(end, readable, writable, urgent, timeout, mask);
}

// Only a listener has SO_ACCEPTCONN.
int getsockopt(int sock, int level, int option, void* value, socklen_t* length) noexcept {
    static const auto real = next<decltype(&getsockopt)>("getsockopt");
    const int result = real(sock, level, option, value, length);
    if (hold() && result == 0 && level == SOL_SOCKET && option == SO_ACCEPTCONN &&
        *static_cast<const int*>(value) == 0) {
        errno = ENOPROTOOPT;
        return -1;
    }
    return result;
}
}
