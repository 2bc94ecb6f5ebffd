// Builds the text of a request and refuses what would not arrive as it was given: a request ends at
// a 0x00 or 0x01 byte, a parameter at its line's end.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "corvanectl/command_list.h"

namespace corvane::ctl {

/// The request with its terminator. `readData` is called for a command that takes data only; what
/// it throws passes. Throws Exception for a wrong number of parameters and for bytes that cannot be
/// sent.
std::string makeRequest(const CommandUsage& command, const std::vector<std::string>& parameters,
                        const std::function<std::string()>& readData);

}  // namespace corvane::ctl
