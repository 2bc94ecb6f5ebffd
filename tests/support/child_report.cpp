// A program for tests of how other programs are started. It writes what it was given to the file (a
// pipe, as a rule) that CHILD_REPORT names: one line for each argument and each open descriptor
// ("/dev/null", "pipe:" and its inode, or "other"), the signals that are blocked, ignored and
// caught as sets of bits, and "end". Its own code keeps away from the sanitizers, which open
// descriptors and install signal handlers.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string targetOf(int fd) {
    struct stat target {};
    struct stat null {};
    ::fstat(fd, &target);
    ::stat("/dev/null", &null);
    if (S_ISCHR(target.st_mode) && target.st_rdev == null.st_rdev) {
        return "/dev/null";
    }
    return S_ISFIFO(target.st_mode) ? "pipe:" + std::to_string(target.st_ino) : "other";
}

std::string openDescriptors() {
    std::string lines;
    DIR* const listing = ::opendir("/dev/fd");
    while (const dirent* entry = ::readdir(listing)) {
        const std::string name = entry->d_name;
        const int fd = name.front() == '.' ? -1 : std::stoi(name);
        if (fd != -1 && fd != ::dirfd(listing)) {
            lines += "descriptor " + name + " " + targetOf(fd) + "\n";
        }
    }
    ::closedir(listing);
    return lines;
}

std::string signalLine(const char* name, std::uint64_t set) {
    std::array<char, 32> line{};
    std::snprintf(line.data(), line.size(), "%s:\t%016llx\n", name,
                  static_cast<unsigned long long>(set));
    return line.data();
}

std::string signalSets() {
    sigset_t mask;
    ::sigprocmask(SIG_BLOCK, nullptr, &mask);
    std::uint64_t blocked = 0;
    std::uint64_t ignored = 0;
    std::uint64_t caught = 0;
    for (int sig = 1; sig < NSIG; ++sig) {
        const std::uint64_t bit = std::uint64_t{1} << static_cast<unsigned>(sig - 1);
        struct sigaction action {};
        ::sigaction(sig, nullptr, &action);
        blocked |= sigismember(&mask, sig) == 1 ? bit : 0;
        ignored |= action.sa_handler == SIG_IGN ? bit : 0;
        caught |= action.sa_handler != SIG_IGN && action.sa_handler != SIG_DFL ? bit : 0;
    }
    return signalLine("SigBlk", blocked) + signalLine("SigIgn", ignored) +
           signalLine("SigCgt", caught);
}

}  // namespace

int main(int argc, char** argv) {
    std::string report = openDescriptors() + signalSets();
    for (int i = 0; i < argc; ++i) {
        report += "argument " + std::string(argv[i]) + "\n";
    }
    report += "end\n";
    const char* path = std::getenv("CHILD_REPORT");
    const int file = path == nullptr ? -1 : ::open(path, O_WRONLY);
    return ::write(file, report.data(), report.size()) == static_cast<ssize_t>(report.size()) ? 0
                                                                                              : 1;
}
