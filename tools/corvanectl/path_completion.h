// Paths that begin like the one that is being typed: the server's, and those of this machine.
#pragma once

#include <string>
#include <vector>

#include "corvanectl/exchange.h"

namespace corvane::ctl {

enum class Wanted { All, Directories };

/// Hidden entries only where the name begins with a dot; none with control characters in their
/// names; none without a server.
std::vector<std::string> serverPathsLike(const std::string& begin, Wanted wanted,
                                         const Endpoint& endpoint);

std::vector<std::string> localPaths(const std::string& begin);

}  // namespace corvane::ctl
