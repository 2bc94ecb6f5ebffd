// What the scenarios hold against the server, and how a promise that is not kept ends them.
#pragma once

#include <cstddef>
#include <string>

#include "support/client_socket.h"
#include "support/process_status.h"
#include "support/server_process.h"
#include "support/wait_until.h"

namespace corvane::soak {

using test::ClientSocket;
using test::ServerProcess;

/// Ends the scenario with a message unless `kept`.
void expect(bool kept, const std::string& promise);

/// Waits until `condition` holds, which it has to in time.
template <typename Condition>
void await(Condition condition, const std::string& promise) {
    expect(test::waitUntil(condition), promise);
}

/// Waits for the server's end, which has to come within a second, with status 0 and, while there is
/// a log, with its last line.
void expectEnd(ServerProcess& server);
/// SIGTERM and expectEnd().
void stop(ServerProcess& server);

/// How often `text` occurs in the log.
std::size_t timesLogged(const ServerProcess& server, const std::string& text);

}  // namespace corvane::soak
