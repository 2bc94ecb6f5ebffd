#include "support/process_status.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <system_error>

#include "support/scratch_directory.h"

namespace corvane::test {
namespace {

namespace fs = std::filesystem;

std::string procFile(pid_t pid, const std::string& name) {
    return readFile("/proc/" + std::to_string(pid) + "/" + name);
}

/// The fields of /proc/PID/stat from the process state on (the name before may hold anything).
std::vector<std::string> statFields(pid_t pid) {
    const std::string text = procFile(pid, "stat");
    std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    return {std::istream_iterator<std::string>(fields), {}};
}

/// The number behind a word of /proc/PID/status.
long statusNumber(pid_t pid, const std::string& word) {
    const std::string text = procFile(pid, "status");
    const std::size_t line = text.find("\n" + word + ":");
    return line == std::string::npos ? 0 : std::stol(text.substr(line + word.size() + 2));
}

std::vector<std::string> namesIn(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code gone;
    for (fs::directory_iterator i(directory, gone); i != fs::directory_iterator();
         i.increment(gone)) {
        names.push_back(i->path().filename());
    }
    return names;
}

}  // namespace

std::vector<pid_t> allProcesses() {
    std::vector<pid_t> pids;
    for (const std::string& name : namesIn("/proc")) {
        if (name.find_first_not_of("0123456789") == std::string::npos) {
            pids.push_back(static_cast<pid_t>(std::stol(name)));
        }
    }
    return pids;
}

std::string commandLineOf(pid_t pid) { return procFile(pid, "cmdline"); }

char stateOf(pid_t pid) {
    const std::vector<std::string> fields = statFields(pid);
    return fields.empty() ? '\0' : fields[0].front();
}

int descriptorsOf(pid_t pid) {
    return static_cast<int>(namesIn("/proc/" + std::to_string(pid) + "/fd").size());
}

bool hasZombieChild(pid_t pid) {
    const std::vector<pid_t> pids = allProcesses();
    return std::any_of(pids.begin(), pids.end(), [parent = std::to_string(pid)](pid_t child) {
        const std::vector<std::string> fields = statFields(child);
        return fields.size() > 1 && fields[0] == "Z" && fields[1] == parent;
    });
}

std::vector<pid_t> childrenOf(pid_t pid) {
    std::istringstream pids(procFile(pid, "task/" + std::to_string(pid) + "/children"));
    return {std::istream_iterator<pid_t>(pids), {}};
}

long processorTimeOf(pid_t pid) {
    const std::vector<std::string> fields = statFields(pid);
    return fields.size() < 13 ? 0 : std::stol(fields[11]) + std::stol(fields[12]);
}

long residentMemoryOf(pid_t pid) { return statusNumber(pid, "VmRSS"); }

long waitsOf(pid_t pid) { return statusNumber(pid, "voluntary_ctxt_switches"); }

}  // namespace corvane::test
