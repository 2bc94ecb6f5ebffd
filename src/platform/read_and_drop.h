// Taking received bytes out of a socket where the system cannot drop them.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace corvane::platform {

/// Reads up to `count` bytes that have arrived and forgets them. Returns how many, or what recv(2)
/// returned when there were none. Never waits.
ssize_t readAndDrop(int sock, std::size_t count);

}  // namespace corvane::platform
