// What a terminal is told and asked.
#pragma once

#include <cstddef>

namespace corvane::ctl {

bool isTerminal(int fd);

/// The columns of the terminal; 80 where it does not say.
std::size_t terminalWidth(int fd);

}  // namespace corvane::ctl
