#include <sys/epoll.h>
#include <sys/signalfd.h>
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

bool control(int queue, int operation, int sock) {
    epoll_event wanted{};
    wanted.events = EPOLLIN | EPOLLRDHUP | EPOLLPRI | std::uint32_t{EPOLLET};
    wanted.data.fd = sock;
    return ::epoll_ctl(queue, operation, sock, &wanted) == 0;
}

void closeIfOpen(int fd) {
    if (fd != -1) {
        ::close(fd);
    }
}

}  // namespace

EventQueue::~EventQueue() {
    closeIfOpen(signals_);
    closeIfOpen(queue_);
}

void EventQueue::open(const sigset_t& signals) {
    if (queue_ != -1) {
        return;
    }
    queue_ = ::epoll_create1(EPOLL_CLOEXEC);
    signals_ = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    epoll_event pending{};
    pending.events = EPOLLIN;  // as long as a signal is pending, not only once
    pending.data.fd = signals_;
    if (::epoll_ctl(queue_, EPOLL_CTL_ADD, signals_, &pending) != 0) {
        closeIfOpen(std::exchange(signals_, -1));
        closeIfOpen(std::exchange(queue_, -1));
    }
}

bool EventQueue::watch(int sock) {
    return control(queue_, EPOLL_CTL_ADD, sock) || (errno == EEXIST && rearm(sock));
}

bool EventQueue::rearm(int sock) { return control(queue_, EPOLL_CTL_MOD, sock); }

void EventQueue::unwatch(int sock) { ::epoll_ctl(queue_, EPOLL_CTL_DEL, sock, nullptr); }

int EventQueue::wait(std::optional<std::chrono::milliseconds> limit,
                     std::vector<SocketEvent>& events) {
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    int timeout = limit ? static_cast<int>(std::min<std::int64_t>(limit->count(), longest)) : -1;
    std::array<epoll_event, 32> listed;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    constexpr auto room = static_cast<int>(listed.size());
    events.clear();
    bool isSignalPending = false;
    int count = 0;
    do {
        count = ::epoll_wait(queue_, listed.data(), room, timeout);
        for (int i = 0; i < count; ++i) {
            const epoll_event& event = listed[static_cast<std::size_t>(i)];
            if (event.data.fd == signals_) {
                isSignalPending = true;
            } else if (event.events != EPOLLPRI) {  // an urgent byte alone cannot be received
                events.push_back({event.data.fd, event.events != EPOLLIN});
            }
        }
        timeout = 0;
    } while (count == room);  // the others as well: which comes first is for the caller to say
    if (isSignalPending) {
        errno = EINTR;
        return -1;
    }
    return count == -1 && events.empty() ? -1 : static_cast<int>(events.size());
}

}  // namespace corvane::platform
