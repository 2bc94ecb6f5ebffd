// The flags that go with every open(2) of a file that a client or the configuration names: it may
// turn out to be anything, and none of it may hold or end the program.
#pragma once

#include <fcntl.h>

namespace corvane {

/// Not handed down to other programs, no waiting for the other end of a pipe, and a terminal does
/// not become the controlling one, whose end would end the program.
inline constexpr int guardedOpen = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

}  // namespace corvane
