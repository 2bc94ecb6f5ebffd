#include "platform/waiting.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <initializer_list>

#include "platform/system.h"

namespace corvane {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

sigset_t insideWaits;
bool signalsHeld = false;
volatile std::sig_atomic_t stopWanted = 0;
void (*actionBeforeWaits)() noexcept = []() noexcept {};

// A longer time is an error of pselect before macOS 10.15 (xnu bsd/kern/kern_time.c, itimerfix).
constexpr seconds longestWait{100'000'000};

constexpr std::initializer_list<int> signalNumbers = {SIGTERM, SIGINT, SIGCHLD};

// The signal mask for the inside of a wait. The end of a child ends a wait also where signals are
// not held: whoever waits for a child blocks its signal outside.
sigset_t waitMask(sigset_t outside) {
    if (signalsHeld) {
        return insideWaits;
    }
    sigdelset(&outside, SIGCHLD);
    return outside;
}

// Where there is no event queue: pselect does not let signals in when a socket is ready at once, as
// under steady load; asking for them before every wait would cost a system call a request.
bool deliverSignalsNowAndThen() {
    static std::int64_t lastTime = 0;
    const std::int64_t now = platform::coarseMilliseconds();
    if (now == lastTime) {
        return false;
    }
    lastTime = now;
    return deliverPendingSignals();
}

// Where a descriptor is beyond an fd_set: poll cannot let signals in, so that they are asked for
// now and then.
bool waitInSlices(int fd, Direction direction, const Deadline& deadline) {
    constexpr milliseconds slice{50};
    pollfd wanted{fd, static_cast<short>(direction == Direction::Read ? POLLIN : POLLOUT), 0};
    prepareToWait();
    do {
        if (deliverPendingSignals() || ::poll(&wanted, 1, slice.count()) != 0) {
            return true;
        }
    } while (!deadline || timeUntil(*deadline) > nanoseconds::zero());
    return false;
}

}  // namespace

void beforeEveryWait(void (*action)() noexcept) { actionBeforeWaits = action; }

void prepareToWait() { actionBeforeWaits(); }

void deliverSignalsOnlyInWaits() {
    ::sigprocmask(SIG_BLOCK, &heldSignals(), &insideWaits);
    // A parent may have left them blocked; the server must be stoppable all the same.
    for (const int sig : signalNumbers) {
        sigdelset(&insideWaits, sig);
    }
    signalsHeld = true;
}

bool signalsAreHeld() { return signalsHeld; }

const sigset_t& heldSignals() {
    static const sigset_t signals = [] {
        sigset_t set;
        sigemptyset(&set);
        for (const int sig : signalNumbers) {
            sigaddset(&set, sig);
        }
        return set;
    }();
    return signals;
}

bool deliverPendingSignals() {
    sigset_t pending;
    if (!signalsHeld || ::sigpending(&pending) != 0 ||
        std::none_of(signalNumbers.begin(), signalNumbers.end(),
                     [&pending](int sig) { return sigismember(&pending, sig) == 1; })) {
        return false;
    }
    sigset_t held;
    ::sigprocmask(SIG_SETMASK, &insideWaits, &held);
    ::sigprocmask(SIG_SETMASK, &held, nullptr);
    return true;
}

void requestStop() { stopWanted = 1; }

void withdrawStop() { stopWanted = 0; }

bool stopRequested() { return stopWanted != 0; }

bool interrupted() {
    deliverPendingSignals();
    if (stopRequested()) {
        errno = EINTR;
        return true;
    }
    return false;
}

Deadline deadlineAfter(int secondsAway) {
    return secondsAway == 0 ? Deadline() : steady_clock::now() + seconds(secondsAway);
}

bool hasPassed(const Deadline& deadline) { return deadline && steady_clock::now() >= *deadline; }

Deadline earlier(const Deadline& a, const Deadline& b) {
    if (!a || !b) {
        return a ? a : b;
    }
    return std::min(a, b);
}

nanoseconds timeUntil(steady_clock::time_point deadline) {
    return std::max(nanoseconds::zero(),
                    duration_cast<nanoseconds>(deadline - steady_clock::now()));
}

int waitForSockets(int nfds, fd_set* readable, fd_set* writable, const Deadline& deadline) {
    prepareToWait();
    if (deliverSignalsNowAndThen()) {
        errno = EINTR;
        return -1;
    }
    timespec timeout{};
    if (deadline) {
        const nanoseconds left = std::min<nanoseconds>(timeUntil(*deadline), longestWait);
        const auto whole = duration_cast<seconds>(left);
        timeout = {static_cast<time_t>(whole.count()), static_cast<long>((left - whole).count())};
    }
    sigset_t outside;
    ::sigprocmask(SIG_SETMASK, nullptr, &outside);
    const sigset_t inside = waitMask(outside);
    const int ready =
        ::pselect(nfds, readable, writable, nullptr, deadline ? &timeout : nullptr, &inside);
    // On BSD kernels the mask of the wait can stay in force after it.
    const int error = errno;
    ::sigprocmask(SIG_SETMASK, &outside, nullptr);
    errno = error;
    return ready;
}

bool waitForSocket(int fd, Direction direction, const Deadline& deadline) {
    if (fd >= FD_SETSIZE) {
        return waitInSlices(fd, direction, deadline);
    }
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    const bool read = direction == Direction::Read;
    return waitForSockets(fd + 1, read ? &set : nullptr, read ? nullptr : &set, deadline) != 0;
}

}  // namespace corvane
