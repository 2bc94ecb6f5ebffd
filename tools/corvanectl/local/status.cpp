#include "corvanectl/local/status.h"

#include <array>
#include <ctime>
#include <iostream>

#include "corvanectl/display.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/json.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl::local {
namespace {

using Port = ServerState::Port;

std::string row(const std::string& name, const std::string& value, const std::string& otherwise) {
    return format("  %-14s %s\n", name.c_str(),
                  value.empty() ? otherwise.c_str() : visible(value).c_str());
}

std::string ageOf(std::int64_t seconds) {
    constexpr std::int64_t minute = 60;
    constexpr std::int64_t hour = 60 * minute;
    constexpr std::int64_t day = 24 * hour;
    const auto part = [](std::int64_t count) { return static_cast<long>(count); };
    return seconds < minute ? format("%ld s", part(seconds))
           : seconds < hour ? format("%ld min", part(seconds / minute))
           : seconds < day
               ? format("%ld h %ld min", part(seconds / hour), part(seconds % hour / minute))
               : format("%ld d %ld h", part(seconds / day), part(seconds % day / hour));
}

std::string sinceText(const ServerState& state, std::int64_t now) {
    if (!state.startedAt) {
        return "";
    }
    const std::time_t start = *state.startedAt;
    std::tm parts{};
    ::localtime_r(&start, &parts);
    std::array<char, 32> text{};
    static_cast<void>(std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts));
    return format("%s (%s)", text.data(), ageOf(now - *state.startedAt).c_str());
}

std::string processText(const ServerState& state) {
    return state.process ? format("%d (%s)", *state.process, state.executable.c_str()) : "";
}

std::string connectionsText(const ServerState& state) {
    return state.connections.empty() ? "none"
                                     : format("%zu: %s", state.connections.size(),
                                              strImplde(state.connections, ", ").c_str());
}

std::string sentenceFor(const ServerState& state, int port) {
    switch (state.port) {
        case Port::Corvane:
            return "Corvane is running.\n";
        case Port::Hidden:
            return format(
                "Something listens on port %d, most likely Corvane; its process is another "
                "user's and cannot be looked into. root sees more.\n",
                port);
        case Port::Other:
            return format("Corvane is not running on port %d: another program listens there.\n",
                          port);
        case Port::Connection:
            return format(
                "Corvane is not running on port %d, and could not: a connection has it. "
                "'corvanectl doctor' tells more.\n",
                port);
        case Port::Free:
            break;
    }
    return format("Corvane is not running on port %d.\n", port);
}

std::string jsonOr(const std::string& text) { return text.empty() ? "null" : jsonString(text); }

std::string number(std::optional<std::int64_t> value) {
    return value ? std::to_string(*value) : "null";
}

void requireThisMachine(const std::string& host) {
    if (host != "localhost" && !startsWith(host, "127.")) {
        throw Exception("this looks at the machine that it runs on, not at '" + host + "'");
    }
}

}  // namespace

std::string statusText(const ServerState& state, int port, std::int64_t now) {
    std::string text = sentenceFor(state, port);
    if (!state.isRunning() && state.port != Port::Other) {
        return text;
    }
    const std::string hidden = "cannot be seen";
    text += row("process", processText(state), hidden);
    text += row("user", state.user, hidden);
    text += row("since", sinceText(state, now), hidden);
    text += row("address", state.address, hidden);
    if (state.port == Port::Other) {
        return text;
    }
    text += row("version", state.version, "not told by the log");
    text += row("configuration", state.configuration,
                state.directory.empty() ? hidden : "none, the defaults hold");
    text += row("log", state.log, hidden);
    return text + row("connections", connectionsText(state), "");
}

std::string statusJson(const ServerState& state, int port) {
    std::string connections;
    for (const std::string& each : state.connections) {
        connections += (connections.empty() ? "" : ", ") + jsonString(each);
    }
    const bool known = state.process.has_value();
    return concatenate(
        "{\"running\": ", state.isRunning() ? "true" : "false",
        ", \"certain\": ", state.port == Port::Hidden ? "false" : "true",
        ", \"port\": ", std::to_string(port),
        ", \"process\": ", known ? std::to_string(*state.process) : "null",
        ", \"executable\": ", jsonOr(state.executable), ", \"user\": ", jsonOr(state.user),
        ", \"startedAt\": ", number(state.startedAt), ", \"address\": ", jsonOr(state.address),
        ", \"version\": ", jsonOr(state.version),
        ", \"configuration\": ", jsonOr(state.configuration), ", \"log\": ", jsonOr(state.log),
        ", \"connections\": [", connections, "]}");
}

int status(const Invocation& invocation) {
    requireThisMachine(invocation.endpoint.host);
    const int port = invocation.endpoint.port;
    const ServerState state = serverState(queryForLog(invocation.log, port));
    if (invocation.json) {
        std::cout << statusJson(state, port) << '\n';
    } else {
        std::cout << statusText(state, port, std::time(nullptr));
    }
    return state.isRunning() ? succeeded : answeredFailed;
}

}  // namespace corvane::ctl::local
