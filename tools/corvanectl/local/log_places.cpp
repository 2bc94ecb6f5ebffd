#include "corvanectl/local/log_places.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "corvanectl/local/log_file.h"
#include "platform/port_users.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

std::string homeDirectory() {
    for (const char* name : {"HOME", "USERPROFILE", "TEMP", "TMP"}) {
        if (const char* const value = std::getenv(name); value != nullptr) {
            return value;
        }
    }
    return "";
}

bool isNamedLikeALog(const std::string& path) {
    const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
    return name.find(".log") != std::string_view::npos &&
           (startsWith(name, "cv") || startsWith(name, ".cv"));
}

}  // namespace

LogQuery queryForLog(const std::string& chosen, int port) {
    const std::string program = platform::processInfo(::getpid()).executable;
    return {chosen, port, program.substr(0, program.rfind('/') + 1), homeDirectory()};
}

std::vector<std::string> serverDirectories(const std::string& ownDirectory) {
    std::vector<std::string> directories{ownDirectory};
    if (endsWith(ownDirectory, "/bin/")) {
        directories.push_back(ownDirectory.substr(0, ownDirectory.size() - 4) + "lib/corvane/");
    }
    return directories;
}

std::vector<std::string> likelyLogs(const LogQuery& query) {
    if (!query.chosen.empty()) {
        return {query.chosen};
    }
    const std::string name = format("cv%d.log", query.port);
    std::vector<std::string> logs;
    for (const std::string& directory : serverDirectories(query.ownDirectory)) {
        logs.push_back(directory + name);
    }
    if (!query.home.empty()) {
        logs.push_back(concatenate(query.home, endsWith(query.home, "/") ? "." : "/.", name));
    }
    return logs;
}

std::vector<std::string> openLogs(int port) {
    std::vector<std::string> logs;
    for (const platform::PortUser& user : platform::portUsers(port)) {
        if (user.state == platform::PortUser::State::Listening && user.process) {
            for (const std::string& file :
                 platform::filesWrittenBy(*user.process).value_or(std::vector<std::string>{})) {
                if (isNamedLikeALog(file)) {
                    logs.push_back(file);
                }
            }
        }
    }
    return logs;
}

std::vector<std::string> foundLogs(const LogQuery& query) {
    std::vector<std::string> all =
        query.chosen.empty() ? openLogs(query.port) : std::vector<std::string>{};
    for (const std::string& path : likelyLogs(query)) {
        if (std::find(all.begin(), all.end(), path) == all.end()) {
            all.push_back(path);
        }
    }
    all.erase(std::remove_if(all.begin(), all.end(),
                             [](const std::string& path) { return !endOfLog(path); }),
              all.end());
    return all;
}

}  // namespace corvane::ctl
