// Standard input, or another file, as the data of a request.
#pragma once

#include <string>

namespace corvane::ctl {

/// Everything that can be read from the descriptor. Throws Exception when reading fails, so that
/// half of a file is never taken for the whole; `name` is for the message.
std::string readInput(int fd, const std::string& name = "standard input");

}  // namespace corvane::ctl
