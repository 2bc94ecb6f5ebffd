// Stands for the system's event queue where there is none, or where the build leaves it out:
// opening it has no effect, and the caller waits with pselect.
#include <cerrno>

#include "platform/event_queue.h"

namespace corvane::platform {

EventQueue::~EventQueue() = default;

void EventQueue::open(const sigset_t& /*signals*/) {}

bool EventQueue::watch(int /*sock*/) {
    errno = ENOSYS;
    return false;
}

bool EventQueue::rearm(int /*sock*/) {
    errno = ENOSYS;
    return false;
}

void EventQueue::unwatch(int /*sock*/) {}

int EventQueue::wait(std::optional<std::chrono::milliseconds> /*limit*/,
                     std::vector<SocketEvent>& /*events*/) {
    errno = ENOSYS;
    return -1;
}

}  // namespace corvane::platform
