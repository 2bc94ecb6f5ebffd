#include "fuzz/confined_server.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <sstream>
#include <string_view>

namespace corvane::fuzz {
namespace {

struct PathCommand {
    std::string_view name;
    int paths;  // how many of its first parameters are paths
};

constexpr std::array<PathCommand, 9> pathCommands{{{"write", 1},
                                                   {"makeDir", 1},
                                                   {"delete", 1},
                                                   {"copy", 2},
                                                   {"rename", 2},
                                                   {"readByte", 1},
                                                   {"readText", 1},
                                                   {"listDir", 1},
                                                   {"execute", 1}}};

// The server drops some characters of a path; without them it must not lead elsewhere either.
bool staysInside(std::string path) {
    std::erase_if(path, [](char c) { return c == '?' || c == '*'; });
    return !path.starts_with('/') && !path.starts_with('\\') &&
           path.find("..") == std::string::npos;
}

// Only a bare name, which is looked up in an empty PATH, may be executed. Movies would leave pages
// in the system's directory for temporary files.
bool startsNothing(const std::string& target) {
    return target.find_first_of("/\\") == std::string::npos &&
           target.find(".swf") == std::string::npos;
}

bool isHarmless(const std::string& cmd, const std::string& parameters) {
    const auto* const command =
        std::find_if(pathCommands.begin(), pathCommands.end(),
                     [&cmd](const PathCommand& row) { return row.name == cmd; });
    if (command == pathCommands.end()) {
        return true;
    }
    std::istringstream lines(parameters);
    for (int i = 0; i < command->paths; ++i) {
        const std::string path = Server::getline(lines);
        if (!staysInside(path) || (cmd == "execute" && !startsNothing(path))) {
            return false;
        }
    }
    return true;
}

}  // namespace

void ConfinedServer::processClientCommand(int sock, const std::string& cmd, std::istream& params) {
    const std::string parameters(std::istreambuf_iterator<char>(params), {});
    if (!isHarmless(cmd, parameters)) {
        sendFatalError(sock, cmd);
        return;
    }
    std::istringstream stream(parameters);
    CorvaneServer::processClientCommand(sock, cmd, stream);
}

}  // namespace corvane::fuzz
