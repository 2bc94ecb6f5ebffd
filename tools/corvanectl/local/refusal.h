// Whose server it is that closes connections without a word, because it serves its own user only.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/port_users.h"

namespace corvane::ctl {

/// The name of the other user than `self` who listens among these sockets of a port. Nothing when
/// nobody does or the system does not tell who, and for root, whom no server refuses.
std::optional<std::string> refusingUser(const std::vector<platform::PortUser>& sockets, uid_t self);

/// The same on a port of this machine, for this program's user. With `waitForEnd` the server has up
/// to a second to go.
std::optional<std::string> whoRefuses(int port, bool waitForEnd);

}  // namespace corvane::ctl
