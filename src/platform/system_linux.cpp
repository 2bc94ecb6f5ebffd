#include <fcntl.h>
#include <malloc.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/system.h"

namespace corvane::platform {

int acceptConnection(int listener, sockaddr_in& peer) {
    peer = {};
    socklen_t length = sizeof peer;
    return ::accept4(listener, reinterpret_cast<sockaddr*>(&peer), &length,
                     SOCK_CLOEXEC | SOCK_NONBLOCK);
}

void simplifyCongestionControl(int listener) {
    constexpr std::string_view simplest = "reno";  // part of every kernel, allowed to every user
    static_cast<void>(::setsockopt(listener, IPPROTO_TCP, TCP_CONGESTION, simplest.data(),
                                   static_cast<socklen_t>(simplest.size())));
}

int sendFlags() { return MSG_NOSIGNAL; }

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

int syncToDisk(int fd) {
    if (::fsync(fd) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOTSUP || errno == ENOSYS || errno == EROFS ? 0 : -1;
}

std::int64_t coarseMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

void keepFreedMemory() {
    static_cast<void>(::mallopt(M_MMAP_MAX, 0));  // a block of its own is always given back
    static_cast<void>(::mallopt(M_TRIM_THRESHOLD, -1));
}

void returnFreedMemory() { static_cast<void>(::malloc_trim(0)); }

bool endsProcessByDefault(int sig) {
    constexpr std::array others = {SIGCHLD, SIGCONT, SIGURG,  SIGWINCH,
                                   SIGTSTP, SIGTTIN, SIGTTOU, SIGSTOP};
    return std::find(others.begin(), others.end(), sig) == others.end();
}

int searchFlag() { return O_PATH; }

std::string currentDirectory(std::size_t room) {
    std::array<char, PATH_MAX> path;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const char* const found = ::getcwd(path.data(), std::min(room, path.size()));
    if (found == nullptr) {
        return "";
    }
    std::string directory(found, std::strlen(found) + 1);
    directory.pop_back();  // leaves room for a slash, so that it is allocated once
    return directory;
}

std::string temporaryDirectory() {
    for (const char* directory : {static_cast<const char*>(std::getenv("TMPDIR")), "/tmp"}) {
        struct stat info {};
        if (directory != nullptr && ::stat(directory, &info) == 0 && S_ISDIR(info.st_mode)) {
            std::string path = directory;
            while (path.size() > 1 && path.back() == '/') {  // "/" itself gets another one
                path.pop_back();
            }
            return path + '/';
        }
    }
    return "";
}

const char* const temporaryNamePattern = "/tmp/fileXXXXXX";

}  // namespace corvane::platform
