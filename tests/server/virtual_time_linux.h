// Time that passes only where the server waits: the steady clock of this program stands still, and
// a wait of the server in which nothing happens is over at once, with the clock put forward by
// its length. So a test of seconds takes none, and measures no time of a loaded machine.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace corvane::test {

/// One at a time.
class VirtualTime {
  public:
    /// The clock stands still from now on.
    VirtualTime();
    /// It goes on from the real time.
    ~VirtualTime();
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;
    VirtualTime(VirtualTime&&) = delete;
    VirtualTime& operator=(VirtualTime&&) = delete;

    /// The lengths of the waits in which nothing happened.
    const std::vector<std::chrono::milliseconds>& waits() const { return waits_; }
    /// Called after each of these.
    std::function<void()> afterWait = [] {};

    /// For the functions that take the place of the C library's.
    std::chrono::nanoseconds now() const { return now_; }
    void pass(std::chrono::milliseconds length);

  private:
    std::chrono::nanoseconds now_;
    std::vector<std::chrono::milliseconds> waits_;
};

}  // namespace corvane::test
