#include <sys/event.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <utility>

#include "platform/event_queue.h"

namespace corvane::platform {
namespace {

using std::chrono::milliseconds;

// A few years are an error of kevent(2) before macOS 10.15 (xnu bsd/kern/kern_time.c, itimerfix).
constexpr milliseconds longest{std::numeric_limits<int>::max()};

// How long a signal may take from the notice of it until it is pending.
constexpr milliseconds signalDelay{100};

struct kevent change(int ident, int filter, int flags) {
    struct kevent result {};
    result.ident = static_cast<std::uintptr_t>(ident);
    result.filter = static_cast<std::int16_t>(filter);
    result.flags = static_cast<std::uint16_t>(flags);
    return result;
}

bool isAnyPending(const sigset_t& signals) {
    sigset_t pending;
    ::sigpending(&pending);
    for (int sig = 1; sig < NSIG; ++sig) {
        if (sigismember(&signals, sig) == 1 && sigismember(&pending, sig) == 1) {
            return true;
        }
    }
    return false;
}

timespec toTimespec(milliseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const std::chrono::nanoseconds rest = time - seconds;
    return {static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
}

}  // namespace

EventQueue::~EventQueue() {
    if (queue_ != -1) {
        ::close(queue_);
    }
}

void EventQueue::open(const sigset_t& signals) {
    if (queue_ != -1) {
        return;
    }
    queue_ = ::kqueue();
    held_ = signals;
    for (int sig = 1; sig < NSIG && queue_ != -1; ++sig) {
        const struct kevent wanted = change(sig, EVFILT_SIGNAL, EV_ADD);
        if (sigismember(&signals, sig) == 1 &&
            ::kevent(queue_, &wanted, 1, nullptr, 0, nullptr) == -1) {
            ::close(std::exchange(queue_, -1));
        }
    }
}

bool EventQueue::watch(int sock) {
    const struct kevent wanted = change(sock, EVFILT_READ, EV_ADD | EV_CLEAR);
    return ::kevent(queue_, &wanted, 1, nullptr, 0, nullptr) == 0;
}

// What is there counts as news for a filter that is added. One that is not there cannot be deleted,
// and then nothing is added.
bool EventQueue::rearm(int sock) {
    const std::array<struct kevent, 2> again = {change(sock, EVFILT_READ, EV_DELETE),
                                                change(sock, EVFILT_READ, EV_ADD | EV_CLEAR)};
    return ::kevent(queue_, again.data(), static_cast<int>(again.size()), nullptr, 0, nullptr) == 0;
}

void EventQueue::unwatch(int sock) {
    const struct kevent unwanted = change(sock, EVFILT_READ, EV_DELETE);
    ::kevent(queue_, &unwanted, 1, nullptr, 0, nullptr);
}

// The signal filter tells of blocked signals, but neither of those that were pending before it was
// added nor of those for one thread, like those of raise(3). And it tells before the signal is
// pending (xnu bsd/kern/kern_sig.c, psignal_internal): a short wait comes next then.
int EventQueue::wait(std::optional<milliseconds> limit, std::vector<SocketEvent>& events) {
    events.clear();
    bool isSignalPending = isAnyPending(held_);
    if (std::exchange(isSignalDue_, false)) {
        limit = std::min(limit.value_or(signalDelay), signalDelay);
    }
    timespec timeout = toTimespec(isSignalPending ? milliseconds::zero()
                                                  : std::min(limit.value_or(longest), longest));
    std::array<struct kevent, 32> listed;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    constexpr auto room = static_cast<int>(listed.size());
    int count = 0;
    do {
        count = ::kevent(queue_, nullptr, 0, listed.data(), room, &timeout);
        for (int i = 0; i < count; ++i) {
            const struct kevent& event = listed[static_cast<std::size_t>(i)];
            if (event.filter == EVFILT_SIGNAL) {
                isSignalDue_ = true;
            } else {
                // EV_EOF tells of a hang-up, but nothing of what an urgent byte parts from the
                // rest: no receive goes beyond that (xnu bsd/kern/uipc_socket.c,
                // filt_soread_common).
                events.push_back({static_cast<int>(event.ident), true});
            }
        }
        timeout = {};
    } while (count == room);  // the others as well: which comes first is for the caller to say
    if (isSignalDue_) {
        isSignalPending = true;
        isSignalDue_ = !isAnyPending(held_);
    }
    if (isSignalPending) {
        errno = EINTR;
        return -1;
    }
    return count == -1 && events.empty() ? -1 : static_cast<int>(events.size());
}

}  // namespace corvane::platform
