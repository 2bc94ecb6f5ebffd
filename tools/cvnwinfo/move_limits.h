// How long a window is watched after it has been asked to move. Window managers answer the request
// itself at once and carry it out later, some in several steps.
#pragma once

#include <chrono>

namespace corvane::wintool {

// The window has this long to begin to follow.
constexpr std::chrono::milliseconds followLimit(500);
// Once it has begun, further steps of the same move come at once.
constexpr std::chrono::milliseconds quietLimit(100);

}  // namespace corvane::wintool
