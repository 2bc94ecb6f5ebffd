// What /proc tells of processes: the end-to-end tests look into it for what a server leaves behind.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "support/scratch_directory.h"

namespace corvane::test {

/// The bytes of /proc/PID/NAME; empty when the process is gone.
inline std::string procFile(pid_t pid, const std::string& name) {
    return readFile("/proc/" + std::to_string(pid) + "/" + name);
}

/// The fields of /proc/PID/stat from the process state on (the name before may hold anything).
inline std::vector<std::string> statFields(pid_t pid) {
    const std::string text = procFile(pid, "stat");
    std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    return {std::istream_iterator<std::string>(fields), {}};
}

/// Names in a directory that may vanish meanwhile.
inline std::vector<std::string> namesIn(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code gone;
    using Iterator = std::filesystem::directory_iterator;
    for (Iterator i(directory, gone); i != Iterator(); i.increment(gone)) {
        names.push_back(i->path().filename());
    }
    return names;
}

/// Calls `visit` with the id of every process of the system.
template <typename Visit>
void forEachProcess(Visit visit) {
    for (const std::string& name : namesIn("/proc")) {
        if (name.find_first_not_of("0123456789") == std::string::npos) {
            visit(static_cast<pid_t>(std::stol(name)));
        }
    }
}

}  // namespace corvane::test
