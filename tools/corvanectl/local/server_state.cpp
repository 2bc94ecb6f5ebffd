#include "corvanectl/local/server_state.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string_view>

#include "corvanectl/local/log_file.h"
#include "platform/file_desc.h"
#include "platform/peer_user.h"
#include "platform/port_users.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

using platform::PortUser;
using Port = ServerState::Port;

constexpr std::size_t longestSearch = std::size_t{4} * 1024 * 1024;

std::string nameOf(std::optional<uid_t> user) {
    if (!user) {
        return "";
    }
    const std::string name = platform::userName(*user);
    return name.empty() ? std::to_string(*user) : name;
}

// By binding it for a moment, as the server would. Other users' sockets are seen so on any system.
bool isTaken(int port, in_addr_t address) {
    const FileDesc probe(::socket(AF_INET, SOCK_STREAM, 0));
    const int on = 1;
    ::setsockopt(probe, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<in_port_t>(port));
    place.sin_addr.s_addr = htonl(address);
    const int result = ::bind(probe, reinterpret_cast<const sockaddr*>(&place), sizeof place);
    return result == -1 && errno == EADDRINUSE;
}

// The time at the start of a line of the default layout, in seconds since 1970.
std::optional<std::int64_t> timeOf(const std::string& line) {
    std::tm parts{};
    parts.tm_isdst = -1;
    const char* const end = ::strptime(line.c_str(), "%Y-%m-%d %H:%M:%S", &parts);
    return end != nullptr && *end == ',' ? std::optional<std::int64_t>(std::mktime(&parts))
                                         : std::nullopt;
}

void describeProcess(ServerState& state) {
    const platform::ProcessInfo info = platform::processInfo(*state.process);
    state.executable = info.executable;
    state.startedAt = info.startedAt;
    const std::string& name = startsWith(info.startedAs, "/") ? info.startedAs : info.executable;
    state.directory = name.substr(0, name.rfind('/') + 1);
    state.port = endsWith(name, "/corvane") ? Port::Corvane : Port::Other;
    state.configuration = configurationIn(state.directory);
}

void describeLog(ServerState& state, const LogQuery& query) {
    const std::vector<std::string> logs = foundLogs(query);
    if (logs.empty() || state.port != Port::Corvane) {
        return;
    }
    state.log = logs.front();
    if (state.startedAt) {
        state.version =
            versionIn(readLog(state.log, {}, longestSearch).value_or(""), *state.startedAt);
    }
}

}  // namespace

std::string versionIn(const std::string& lines, std::int64_t startedAt) {
    constexpr std::string_view mark = "] start corvane v. ";
    constexpr std::int64_t clocksDiffer = 2;
    const std::size_t at = lines.rfind(mark);
    if (at == std::string::npos) {
        return "";
    }
    const std::size_t begin = at == 0 ? 0 : lines.rfind('\n', at) + 1;
    const std::optional<std::int64_t> written = timeOf(lines.substr(begin, at - begin));
    const std::string rest = lines.substr(at + mark.size());
    return written && *written >= startedAt - clocksDiffer ? rest.substr(0, rest.find('\n')) : "";
}

std::string configurationIn(const std::string& directory) {
    for (const char* name : {"corvane.conf", "corvane.cfg"}) {
        if (!directory.empty() && ::access((directory + name).c_str(), F_OK) == 0) {
            return directory + name;
        }
    }
    return "";
}

ServerState serverState(const LogQuery& query) {
    const std::vector<PortUser> users = platform::portUsers(query.port);
    const auto listener = std::find_if(users.begin(), users.end(), [](const PortUser& user) {
        return user.state == PortUser::State::Listening;
    });
    ServerState state;
    if (listener == users.end()) {
        const bool isHeld = isTaken(query.port, INADDR_LOOPBACK) || isTaken(query.port, INADDR_ANY);
        state.port = !isHeld ? Port::Free : users.empty() ? Port::Hidden : Port::Connection;
        return state;
    }
    state.port = Port::Hidden;
    state.address = listener->local;
    state.user = nameOf(listener->user);
    state.process = listener->process;
    if (state.process) {
        describeProcess(state);
        describeLog(state, query);
    }
    for (const PortUser& user : users) {
        if (user.state == PortUser::State::Connected) {
            state.connections.push_back(user.remote);
        }
    }
    return state;
}

}  // namespace corvane::ctl
