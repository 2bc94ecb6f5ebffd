// A program for tests of how other programs are started. It writes what it was given to the file (a
// pipe, as a rule) that CHILD_REPORT names: one line for each argument and each open descriptor,
// the signal sets of /proc/self/status, and "end". Its own code keeps away from the sanitizers,
// which open descriptors and install signal handlers.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace {

std::string targetOf(const std::string& link) {
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

std::string openDescriptors() {
    const std::string directory = "/proc/self/fd/";
    std::string lines;
    DIR* const listing = ::opendir(directory.c_str());
    while (const dirent* entry = ::readdir(listing)) {
        const std::string name = entry->d_name;
        if (name.front() != '.' && name != std::to_string(::dirfd(listing))) {
            lines += "descriptor " + name + " " + targetOf(directory + name) + "\n";
        }
    }
    ::closedir(listing);
    return lines;
}

std::string signalSets() {
    std::string lines;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("Sig", 0) == 0 && line.rfind("SigQ", 0) != 0) {
            lines += line + "\n";
        }
    }
    return lines;
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
