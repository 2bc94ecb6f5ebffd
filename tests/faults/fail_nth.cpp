// A library to preload into the server: it makes the Nth call of one function fail. Environment:
//   CORVANE_FAULT_CALL    the function, such as "read"
//   CORVANE_FAULT_NTH     which call fails, 1 for the first
//   CORVANE_FAULT_ERRNO   the error number it fails with; 0 makes it do only half of its work
//   CORVANE_FAULT_REPORT  a file to which one line is written when that happens
// Calls count from the first accepted connection on, and only in the process that accepted it.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" {
// The C library's own allocator, which needs no search.
void* __libc_malloc(std::size_t size);                // NOLINT: its name
void* __libc_realloc(void* block, std::size_t size);  // NOLINT: its name
}

namespace {

// Smaller blocks never fail: log4cpp promises not to throw and could not keep its word.
constexpr std::size_t largeBlock = 4096;
// The error mark of a glibc stream, which has no function to set it.
constexpr int streamError = 0x20;

struct Plan {
    std::string_view call;
    long nth = 0;
    int error = 0;
    const char* report = nullptr;
};

const char* variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

long number(const char* name) { return std::strtol(variable(name), nullptr, 10); }

const Plan& plan() {
    static const Plan fromEnvironment{variable("CORVANE_FAULT_CALL"), number("CORVANE_FAULT_NTH"),
                                      static_cast<int>(number("CORVANE_FAULT_ERRNO")),
                                      variable("CORVANE_FAULT_REPORT")};
    return fromEnvironment;
}

pid_t armedProcess = 0;
long calls = 0;

// What runs at the exit of the process, such as the notes of a coverage build, is left alone.
void disarm() { armedProcess = -1; }

void arm() {
    if (armedProcess == 0) {
        static_cast<void>(plan());
        armedProcess = ::getpid();
        static_cast<void>(std::atexit(disarm));
    }
}

// By system calls, which no fault reaches.
void report() {
    const long fd = ::syscall(SYS_openat, AT_FDCWD, plan().report, O_WRONLY | O_CREAT, 0666);
    ::syscall(SYS_write, fd, plan().call.data(), plan().call.size());
    ::syscall(SYS_close, fd);
}

// Whether this is the call that fails.
bool isTheOne(std::string_view call) {
    if (armedProcess <= 0 || plan().call != call || ::getpid() != armedProcess ||
        ++calls != plan().nth) {
        return false;
    }
    report();
    errno = plan().error;
    return true;
}

template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool halves() { return plan().error == 0; }

std::size_t half(std::size_t count) { return std::max<std::size_t>(1, count / 2); }

mode_t modeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

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

ssize_t read(int fd, void* buffer, std::size_t count) {
    static const auto next = real<decltype(&read)>("read");
    if (!isTheOne("read")) {
        return next(fd, buffer, count);
    }
    return halves() ? next(fd, buffer, half(count)) : -1;
}

ssize_t write(int fd, const void* buffer, std::size_t count) {
    static const auto next = real<decltype(&write)>("write");
    if (!isTheOne("write")) {
        return next(fd, buffer, count);
    }
    return halves() ? next(fd, buffer, half(count)) : -1;
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

int open(const char* path, int flags, ...) {
    static const auto next = real<decltype(&open)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return isTheOne("open") ? -1 : next(path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...) {
    static const auto next = real<decltype(&openat)>("openat");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return isTheOne("openat") ? -1 : next(directory, path, flags, mode);
}

// As the system does it: the descriptor is gone although the call fails.
int close(int fd) {
    static const auto next = real<decltype(&close)>("close");
    const bool failing = isTheOne("close");
    const int result = next(fd);
    errno = failing ? plan().error : errno;
    return failing ? -1 : result;
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

int mkdir(const char* path, mode_t mode) {
    static const auto next = real<decltype(&mkdir)>("mkdir");
    return isTheOne("mkdir") ? -1 : next(path, mode);
}

int mkdirat(int directory, const char* path, mode_t mode) {
    static const auto next = real<decltype(&mkdirat)>("mkdirat");
    return isTheOne("mkdirat") ? -1 : next(directory, path, mode);
}

int unlinkat(int directory, const char* path, int flags) {
    static const auto next = real<decltype(&unlinkat)>("unlinkat");
    return isTheOne("unlinkat") ? -1 : next(directory, path, flags);
}

int remove(const char* path) {
    static const auto next = real<decltype(&remove)>("remove");
    return isTheOne("remove") ? -1 : next(path);
}

int rmdir(const char* path) {
    static const auto next = real<decltype(&rmdir)>("rmdir");
    return isTheOne("rmdir") ? -1 : next(path);
}

DIR* fdopendir(int fd) {
    static const auto next = real<decltype(&fdopendir)>("fdopendir");
    return isTheOne("fdopendir") ? nullptr : next(fd);
}

dirent* readdir(DIR* directory) {
    static const auto next = real<decltype(&readdir)>("readdir");
    return isTheOne("readdir") ? nullptr : next(directory);
}

ssize_t copy_file_range(int from, off64_t* fromOffset, int to, off64_t* toOffset, std::size_t count,
                        unsigned flags) {
    static const auto next = real<decltype(&copy_file_range)>("copy_file_range");
    if (!isTheOne("copy_file_range")) {
        return next(from, fromOffset, to, toOffset, count, flags);
    }
    return halves() ? next(from, fromOffset, to, toOffset, half(count), flags) : -1;
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

std::size_t fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* file) {
    static const auto next = real<decltype(&fwrite)>("fwrite");
    if (!isTheOne("fwrite")) {
        return next(bytes, size, count, file);
    }
    const std::size_t written = next(bytes, size, count / 2, file);
    file->_flags |= streamError;
    errno = plan().error;
    return written;
}

int fclose(FILE* file) {
    static const auto next = real<decltype(&fclose)>("fclose");
    const bool failing = isTheOne("fclose");
    const int result = next(file);
    errno = failing ? plan().error : errno;
    return failing ? EOF : result;
}

void* malloc(std::size_t size) {
    return size >= largeBlock && isTheOne("malloc") ? nullptr : __libc_malloc(size);
}

void* realloc(void* block, std::size_t size) {
    return size >= largeBlock && isTheOne("realloc") ? nullptr : __libc_realloc(block, size);
}

}  // extern "C"
