// Files and directories.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>

#include "platform/darwin_rules/rules.h"

namespace {

using darwin_rules::hold;
using darwin_rules::next;

// unlink(2) of a directory is a matter of rights.
int asDarwin(int result) {
    if (hold() && result == -1 && errno == EISDIR) {
        errno = EPERM;
    }
    return result;
}

// A count is an int below the interface.
bool isTooLong(std::size_t count) {
    if (hold() && count > INT_MAX) {
        errno = EINVAL;
        return true;
    }
    return false;
}

}  // namespace

extern "C" {

int unlink(const char* path) noexcept {
    static const auto real = next<decltype(&unlink)>("unlink");
    return asDarwin(real(path));
}

int unlinkat(int directory, const char* path, int flags) noexcept {
    static const auto real = next<decltype(&unlinkat)>("unlinkat");
    return asDarwin(real(directory, path, flags));
}

// It opens the directory, to ask the descriptor for its path.
char* getcwd(char* path, std::size_t size) noexcept {
    static const auto real = next<decltype(&getcwd)>("getcwd");
    if (hold()) {
        const int here = ::open(".", O_RDONLY | O_CLOEXEC);
        if (here == -1) {
            return nullptr;
        }
        ::close(here);
    }
    return real(path, size);
}

ssize_t copy_file_range(int from, off64_t* fromOffset, int to, off64_t* toOffset, std::size_t count,
                        unsigned flags) {
    static const auto real = next<decltype(&copy_file_range)>("copy_file_range");
    if (hold()) {
        errno = ENOSYS;
        return -1;
    }
    return real(from, fromOffset, to, toOffset, count, flags);
}

ssize_t read(int fd, void* bytes, std::size_t count) {
    static const auto real = next<decltype(&read)>("read");
    return isTooLong(count) ? -1 : real(fd, bytes, count);
}

ssize_t write(int fd, const void* bytes, std::size_t count) {
    static const auto real = next<decltype(&write)>("write");
    return isTooLong(count) ? -1 : real(fd, bytes, count);
}
}
