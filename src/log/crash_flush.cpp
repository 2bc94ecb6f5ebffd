#include "log/crash_flush.h"

#include <signal.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "log/log.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

// Their default is to do nothing, to stop or to go on, or they cannot be handled. One that does
// nothing on some systems only may be missing: its handler then flushes once, and that is all.
constexpr std::array harmless = {SIGCHLD, SIGCONT, SIGURG,  SIGWINCH, SIGTSTP,
                                 SIGTTIN, SIGTTOU, SIGKILL, SIGSTOP};

void writeAndEnd(int sig) {
    requestStop();  // an unread console must not hold the end up
    flushLog();
    static_cast<void>(::raise(sig));  // SA_RESETHAND restored the default action
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
        if (std::find(harmless.begin(), harmless.end(), sig) == harmless.end() &&
            ::sigaction(sig, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) {
            struct sigaction action {};
            action.sa_handler = writeAndEnd;
            // Unsigned on Linux.
            action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER | SA_ONSTACK);
            ::sigaction(sig, &action, nullptr);
        }
    }
}

}  // namespace corvane
