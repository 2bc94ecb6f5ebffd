// Prints a reply for people and for scripts.
#pragma once

#include <ostream>
#include <string>

#include "corvanectl/reply.h"

namespace corvane::ctl {

/// A text goes out byte for byte, a single value on a line of its own, the entries of a directory
/// one on each line, and several values as "name=value" lines.
void printDetails(const Reply& reply, std::ostream& out);

/// One line that says what a FAILED reply tells, and `why` at its end.
std::string describeFailure(const std::string& command, const Reply& reply,
                            const std::string& why = "the server's log tells why");

}  // namespace corvane::ctl
