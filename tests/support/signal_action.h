// What a signal does for the length of a test.
#pragma once

#include <signal.h>

namespace corvane::test {

/// Gives a signal a handler, SIG_IGN or SIG_DFL, and puts the previous one back in the end.
class SignalAction {
  public:
    using Handler = void (*)(int);

    SignalAction(int signal, Handler handler)
        : signal_(signal), previous_(::signal(signal, handler)) {}
    ~SignalAction() { static_cast<void>(::signal(signal_, previous_)); }
    SignalAction(const SignalAction&) = delete;
    SignalAction& operator=(const SignalAction&) = delete;
    SignalAction(SignalAction&&) = delete;
    SignalAction& operator=(SignalAction&&) = delete;

  private:
    int signal_;
    Handler previous_;
};

}  // namespace corvane::test
