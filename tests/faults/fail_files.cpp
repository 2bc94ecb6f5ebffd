// The calls that work on files and directories.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "faults/fail_nth.h"

namespace {

using namespace corvane::faults;

mode_t modeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

bool isWritten(int fd) {
    struct stat status {};
    return ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) &&
           (::fcntl(fd, F_GETFL) & O_ACCMODE) != O_RDONLY;
}

}  // namespace

extern "C" {

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

// The same calls of a program with fortified functions (feature_test_macros(7)).
int __open_2(const char* path, int flags) { return open(path, flags); }
int __openat_2(int directory, const char* path, int flags) {
    return openat(directory, path, flags);
}

// As the system does it: the descriptor is gone although the call fails. "close_written" is the end
// of a file that was written, which tells of what could not be stored (NFS, quotas).
int close(int fd) {
    static const auto next = real<decltype(&close)>("close");
    const bool failing = (isWritten(fd) && isTheOne("close_written")) || isTheOne("close");
    const int result = next(fd);
    errno = failing ? faultError() : errno;
    return failing ? -1 : result;
}

int fsync(int fd) {
    static const auto next = real<decltype(&fsync)>("fsync");
    return isTheOne("fsync") ? -1 : next(fd);
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

}  // extern "C"
