// Signals as in the running server: held back, and let in only by its waits.
#pragma once

#include <csignal>

#include "platform/waiting.h"

namespace corvane {

class HeldSignals {
  public:
    HeldSignals() {
        ::sigprocmask(SIG_SETMASK, nullptr, &previousMask_);
        struct sigaction action {};
        action.sa_handler = [](int) { count = count + 1; };
        ::sigaction(SIGCHLD, &action, &previousAction_);
        count = 0;
        deliverSignalsOnlyInWaits();
    }
    ~HeldSignals() {
        ::sigaction(SIGCHLD, &previousAction_, nullptr);
        ::sigprocmask(SIG_SETMASK, &previousMask_, nullptr);
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    HeldSignals(HeldSignals&&) = delete;
    HeldSignals& operator=(HeldSignals&&) = delete;

    /// How many SIGCHLD have been handled.
    int handled() const { return count; }

  private:
    static inline volatile std::sig_atomic_t count = 0;

    sigset_t previousMask_{};
    struct sigaction previousAction_ {};
};

}  // namespace corvane
