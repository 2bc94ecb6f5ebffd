// Builds the text of a request and refuses what would not arrive as it was given: a request ends at
// a 0x00 or 0x01 byte, a parameter at its line's end.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "corvanectl/command_list.h"

namespace corvane::ctl {

/// The request with its terminator. `data` is read to its end, but only for a command that takes
/// data. Throws Exception for a wrong number of parameters and for bytes that cannot be sent.
std::string makeRequest(const CommandUsage& command, const std::vector<std::string>& parameters,
                        std::istream& data);

}  // namespace corvane::ctl
