#include "log/crash_flush.h"

#include <signal.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "log/log.h"
#include "platform/system.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

void writeAndEnd(int sig) {
    const int savedErrno = errno;
    const bool stopping = stopRequested();
    requestStop();  // an unread console must not hold the end up
    flushLog();
    static_cast<void>(::raise(sig));  // SA_RESETHAND restored the default action
    // The first process of a container, for one, survives that and goes on.
    if (!stopping) {
        withdrawStop();
    }
    errno = savedErrno;
}

// An overflow of the stack leaves no room for the handler.
void provideStack() {
    constexpr std::size_t size = std::size_t{64} * 1024;
    static std::array<char, size> room;
    stack_t stack{};
    stack.ss_sp = room.data();
    stack.ss_size = room.size();
    stack_t current{};
    if (::sigaltstack(nullptr, &current) == 0 && (current.ss_flags & SS_DISABLE) != 0) {
        ::sigaltstack(&stack, nullptr);
    }
}

}  // namespace

void flushLogOnFatalSignals() {
    provideStack();
    for (int sig = 1; sig < NSIG; ++sig) {
        struct sigaction current {};
        if (platform::endsProcessByDefault(sig) && ::sigaction(sig, nullptr, &current) == 0 &&
            current.sa_handler == SIG_DFL) {
            struct sigaction action {};
            action.sa_handler = writeAndEnd;
            action.sa_mask = heldSignals();  // a stop that others ask for is not taken back
            // Unsigned on Linux.
            action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER | SA_ONSTACK);
            ::sigaction(sig, &action, nullptr);
        }
    }
}

}  // namespace corvane
