// Waiting for something that another process or thread does: the condition is looked at again and
// again until it holds, so that a test never depends on how fast the machine is.
#pragma once

#include <poll.h>

#include <chrono>

namespace corvane::test {

/// How long anything may take before a test gives up on it; generous, for loaded machines.
inline constexpr std::chrono::seconds patience{60};

/// Whether `condition` came to hold in time.
template <typename Condition>
bool waitUntil(Condition condition) {
    constexpr int lookAgain = 2;  // milliseconds
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        ::poll(nullptr, 0, lookAgain);
    }
    return true;
}

}  // namespace corvane::test
