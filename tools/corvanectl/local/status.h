// "corvanectl status": whether a server runs, and what can be seen of it.
#pragma once

#include <cstdint>
#include <string>

#include "corvanectl/invocation.h"
#include "corvanectl/local/server_state.h"

namespace corvane::ctl::local {

/// For people: a sentence, and a line for each thing that is known, or that is not and why. `now`
/// is in seconds since 1970.
std::string statusText(const ServerState& state, int port, std::int64_t now);

/// One JSON object on one line, without a line end; null for what is not known.
std::string statusJson(const ServerState& state, int port);

/// Returns 0 when a server runs, else 1. Throws Exception for a host that is not this machine.
int status(const Invocation& invocation);

}  // namespace corvane::ctl::local
