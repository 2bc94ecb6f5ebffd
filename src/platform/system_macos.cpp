#include <fcntl.h>
#include <malloc/malloc.h>
#include <signal.h>
#include <sys/param.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "platform/file_desc.h"
#include "platform/system.h"

namespace corvane::platform {

// The address of a connection that was reset meanwhile stays away, without an error; and with no
// descriptor left (EMFILE) a connection is dropped (xnu bsd/kern/uipc_syscalls.c, accept_nocancel).
int acceptConnection(int listener, sockaddr_in& peer) {
    peer = {};
    socklen_t length = sizeof peer;
    const int sock = ::accept(listener, reinterpret_cast<sockaddr*>(&peer), &length);
    if (sock == -1) {
        return -1;
    }
    const int on = 1;
    static_cast<void>(::setsockopt(sock, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on));
    static_cast<void>(::fcntl(sock, F_SETFD, FD_CLOEXEC));
    // Sending heeds the socket's own flag only, not MSG_DONTWAIT (xnu bsd/kern/uipc_socket.c,
    // sosendcheck). The connection has it from a listener that has it.
    static_cast<void>(::fcntl(sock, F_SETFL, ::fcntl(sock, F_GETFL) | O_NONBLOCK));
    return sock;
}

void simplifyCongestionControl(int /*listener*/) {}  // the system decides

// SO_NOSIGPIPE is set on every connection but those that were reset before they were accepted.
int sendFlags() { return 0; }

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

int syncToDisk(int fd) {
    // fsync(2) leaves the data in the disk's own cache. Only some file systems know more.
    if (::fcntl(fd, F_FULLFSYNC) == 0 || ::fsync(fd) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOTSUP || errno == ENOSYS || errno == EROFS ? 0 : -1;
}

std::int64_t coarseMilliseconds() {
    return static_cast<std::int64_t>(::clock_gettime_nsec_np(CLOCK_MONOTONIC_RAW_APPROX) /
                                     1'000'000);
}

void keepFreedMemory() {}  // the system's allocator decides

void returnFreedMemory() { static_cast<void>(::malloc_zone_pressure_relief(nullptr, 0)); }

bool endsProcessByDefault(int sig) {
    constexpr std::array others = {SIGCHLD, SIGCONT, SIGURG,  SIGWINCH, SIGTSTP,
                                   SIGTTIN, SIGTTOU, SIGSTOP, SIGINFO,  SIGIO};
    return std::find(others.begin(), others.end(), sig) == others.end();
}

// O_SEARCH: O_EXEC, which the headers of SDKs before macOS 13 do not name, and O_DIRECTORY (xnu
// bsd/sys/fcntl.h). Older kernels do not heed the first, so that reading must be permitted there.
int searchFlag() { return 0x4000'0000 | O_DIRECTORY; }

std::string currentDirectory(std::size_t room) {
    // getcwd(3) opens "." itself; the directory stays open for when no descriptor is free.
    static FileDesc kept;
    struct stat here {};
    struct stat known {};
    if (::stat(".", &here) != 0) {
        return "";
    }
    if (kept == -1 || ::fstat(kept, &known) != 0 || known.st_dev != here.st_dev ||
        known.st_ino != here.st_ino) {
        kept = FileDesc(::open(".", O_EVTONLY | O_CLOEXEC));
    }
    std::array<char, MAXPATHLEN> path{};
    if (::getcwd(path.data(), path.size()) == nullptr &&
        ((errno != EMFILE && errno != ENFILE) || kept == -1 ||
         ::fcntl(kept, F_GETPATH, path.data()) == -1)) {
        return "";
    }
    const std::string_view found = path.data();
    return found.size() < room ? std::string(found) : "";
}

std::string temporaryDirectory() {
    const char* const fromEnvironment = ::issetugid() == 0 ? std::getenv("TMPDIR") : nullptr;
    for (const char* directory : {"/tmp/", "/var/tmp/", fromEnvironment, "/tmp/"}) {
        if (directory != nullptr && ::access(directory, W_OK) == 0) {
            const std::string path = directory;
            return path.back() == '/' ? path : path + '/';
        }
    }
    return "";
}

// The number counts the calls of tmpnam(3) in a process; the random letters are enough here.
const char* const temporaryNamePattern = "/var/tmp/tmp.0.XXXXXX";

}  // namespace corvane::platform
