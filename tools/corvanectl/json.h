// A reply as JSON, for scripts.
#pragma once

#include <string>
#include <string_view>

#include "corvanectl/reply.h"

namespace corvane::ctl {

/// A string of JSON with its quotes, always of valid UTF-8: what is none is replaced by U+FFFD, one
/// for each byte.
std::string jsonString(std::string_view text);

/// One object on one line, without a line end: "command", "result", "errno" and "hint" if there are
/// any, and "details" with the members of each detail that are not empty. Beside a member whose
/// bytes are no UTF-8 stands another one, its name with "Hex" at the end: the bytes in hexadecimal
/// digits.
std::string toJson(std::string_view command, const Reply& reply);

}  // namespace corvane::ctl
