// The calls for sockets, waiting, processes and memory.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "faults/fail_nth.h"

extern "C" {
// The C library's own allocator, which needs no search.
void* __libc_malloc(std::size_t size);                // NOLINT: its name
void* __libc_realloc(void* block, std::size_t size);  // NOLINT: its name
}

namespace {

using namespace corvane::faults;

// Smaller blocks never fail: log4cpp promises not to throw and could not keep its word.
constexpr std::size_t largeBlock = 4096;

}  // namespace

extern "C" {

int accept4(int sock, sockaddr* peer, socklen_t* length, int flags) {
    static const auto next = real<decltype(&accept4)>("accept4");
    if (isTheOne("accept4")) {
        return -1;
    }
    const int accepted = next(sock, peer, length, flags);
    if (accepted != -1) {
        arm();
    }
    return accepted;
}

ssize_t recv(int sock, void* buffer, std::size_t count, int flags) {
    static const auto next = real<decltype(&recv)>("recv");
    return isTheOne("recv") ? -1 : next(sock, buffer, count, flags);
}

ssize_t send(int sock, const void* bytes, std::size_t count, int flags) {
    static const auto next = real<decltype(&send)>("send");
    if (!isTheOne("send")) {
        return next(sock, bytes, count, flags);
    }
    return halves() ? next(sock, bytes, half(count), flags) : -1;
}

ssize_t sendmsg(int sock, const msghdr* message, int flags) {
    static const auto next = real<decltype(&sendmsg)>("sendmsg");
    if (!isTheOne("sendmsg")) {
        return next(sock, message, flags);
    }
    if (!halves()) {
        return -1;
    }
    iovec piece = message->msg_iov[0];
    piece.iov_len = half(piece.iov_len);
    msghdr shorter = *message;
    shorter.msg_iov = &piece;
    shorter.msg_iovlen = 1;
    return next(sock, &shorter, flags);
}

pid_t fork() {
    static const auto next = real<decltype(&fork)>("fork");
    return isTheOne("fork") ? -1 : next();
}

// Only for a certain child: for any of them, an error says that there is none.
pid_t waitpid(pid_t pid, int* status, int options) {
    static const auto next = real<decltype(&waitpid)>("waitpid");
    return pid > 0 && isTheOne("waitpid") ? -1 : next(pid, status, options);
}

int pipe(int ends[2]) {
    static const auto next = real<decltype(&pipe)>("pipe");
    return isTheOne("pipe") ? -1 : next(ends);
}

// Only the duplication of descriptors, which needs a free one.
int fcntl(int fd, int command, ...) {
    static const auto next = real<decltype(&fcntl)>("fcntl");
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return command == F_DUPFD_CLOEXEC && isTheOne("fcntl") ? -1 : next(fd, command, argument);
}

int epoll_ctl(int queue, int operation, int fd, epoll_event* event) {
    static const auto next = real<decltype(&epoll_ctl)>("epoll_ctl");
    return isTheOne("epoll_ctl") ? -1 : next(queue, operation, fd, event);
}

int epoll_wait(int queue, epoll_event* events, int room, int timeout) {
    static const auto next = real<decltype(&epoll_wait)>("epoll_wait");
    return isTheOne("epoll_wait") ? -1 : next(queue, events, room, timeout);
}

int pselect(int count, fd_set* readable, fd_set* writable, fd_set* special, const timespec* timeout,
            const sigset_t* mask) {
    static const auto next = real<decltype(&pselect)>("pselect");
    return isTheOne("pselect") ? -1 : next(count, readable, writable, special, timeout, mask);
}

void* malloc(std::size_t size) {
    return size >= largeBlock && isTheOne("malloc") ? nullptr : __libc_malloc(size);
}

void* realloc(void* block, std::size_t size) {
    return size >= largeBlock && isTheOne("realloc") ? nullptr : __libc_realloc(block, size);
}

}  // extern "C"
