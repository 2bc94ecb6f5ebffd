#include "soak/promises.h"

#include <chrono>
#include <csignal>
#include <stdexcept>

namespace corvane::soak {

void expect(bool kept, const std::string& promise) {
    if (!kept) {
        throw std::runtime_error(promise);
    }
}

void expectEnd(ServerProcess& server) {
    constexpr std::chrono::seconds longestStop{1};
    const auto start = std::chrono::steady_clock::now();
    const int status = server.wait();
    expect(std::chrono::steady_clock::now() - start <= longestStop,
           "the server ends within a second");
    expect(status == 0, "the server ends with status 0, not " + std::to_string(status));
    if (!server.log().empty()) {
        expect(timesLogged(server, "application terminated") == 1, "the log tells of the end");
    }
}

void stop(ServerProcess& server) {
    server.signal(SIGTERM);
    expectEnd(server);
}

std::size_t timesLogged(const ServerProcess& server, const std::string& text) {
    const std::string log = server.log();
    std::size_t count = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace corvane::soak
