#include <signal.h>
#include <sys/epoll.h>
#include <sys/event.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <map>
#include <string>
#include <utility>

#include "platform/macos/kqueue_stand_in.h"

namespace {

constexpr long longestSeconds = 100'000'000;

// The descriptors that stand for the signal filters, and their signals.
std::map<int, int> signals;
int toldSignal = 0;
long timeoutSeconds = 0;

// Whether a signal is pending for the process, not for its thread.
bool isPendingForProcess(int sig) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("ShdPnd:", 0) == 0) {
            return ((std::stoull(line.substr(7), nullptr, 16) >> (sig - 1)) & 1U) != 0;
        }
    }
    return false;
}

bool addSignal(int queue, int sig) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, sig);
    const int fd = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    epoll_event wanted{};
    wanted.events = EPOLLIN | std::uint32_t{EPOLLET};
    wanted.data.fd = fd;
    if (::epoll_ctl(queue, EPOLL_CTL_ADD, fd, &wanted) != 0) {
        return false;
    }
    signals[fd] = sig;
    epoll_event pendingBefore{};  // is not told of
    ::epoll_wait(queue, &pendingBefore, 1, 0);
    return true;
}

bool apply(int queue, const struct kevent& change) {
    const int ident = static_cast<int>(change.ident);
    if (change.filter == EVFILT_SIGNAL) {
        return addSignal(queue, ident);
    }
    epoll_event wanted{};
    wanted.events = EPOLLIN | EPOLLRDHUP | ((change.flags & EV_CLEAR) != 0 ? EPOLLET : 0U);
    wanted.data.fd = ident;
    if ((change.flags & EV_DELETE) != 0) {
        return ::epoll_ctl(queue, EPOLL_CTL_DEL, ident, nullptr) == 0;
    }
    return ::epoll_ctl(queue, EPOLL_CTL_ADD, ident, &wanted) == 0 ||
           (errno == EEXIST && ::epoll_ctl(queue, EPOLL_CTL_MOD, ident, &wanted) == 0);
}

struct kevent signalEvent(int sig) {
    return {static_cast<std::uintptr_t>(sig), EVFILT_SIGNAL, EV_ADD | EV_CLEAR, 0, 1, nullptr};
}

struct kevent socketEvent(const epoll_event& event) {
    int count = 0;
    ::ioctl(event.data.fd, FIONREAD, &count);
    const bool isEnd = (event.events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
    return {static_cast<std::uintptr_t>(event.data.fd),
            EVFILT_READ,
            static_cast<std::uint16_t>(EV_ADD | EV_CLEAR | (isEnd ? EV_EOF : 0)),
            0,
            count,
            nullptr};
}

int wait(int queue, struct kevent* list, int room, int milliseconds) {
    int filled = 0;
    if (toldSignal != 0) {
        list[filled++] = signalEvent(std::exchange(toldSignal, 0));
        milliseconds = 0;
    }
    while (true) {
        std::array<epoll_event, 64> events{};
        const int count = ::epoll_wait(queue, events.data(), room - filled, milliseconds);
        if (count == -1) {
            return -1;
        }
        for (int i = 0; i < count; ++i) {
            const epoll_event& event = events[static_cast<std::size_t>(i)];
            const auto found = signals.find(event.data.fd);
            if (found == signals.end()) {
                list[filled++] = socketEvent(event);
            } else if (isPendingForProcess(found->second)) {
                list[filled++] = signalEvent(found->second);
            }
        }
        if (filled > 0 || count == 0) {
            return filled;
        }
    }
}

}  // namespace

namespace corvane::standins {

void tellOfSignal(int sig) { toldSignal = sig; }

long lastTimeout() { return timeoutSeconds; }

}  // namespace corvane::standins

int kqueue() { return ::epoll_create1(EPOLL_CLOEXEC); }

int kevent(int kq, const struct kevent* changelist, int nchanges, struct kevent* eventlist,
           int nevents, const timespec* timeout) {
    for (int i = 0; i < nchanges; ++i) {
        if (!apply(kq, changelist[i])) {
            return -1;
        }
    }
    if (nevents == 0) {
        return 0;
    }
    timeoutSeconds = timeout == nullptr ? -1 : timeout->tv_sec;
    if (timeoutSeconds > longestSeconds) {
        errno = EINVAL;
        return -1;
    }
    const long milliseconds =
        timeout == nullptr ? -1 : timeout->tv_sec * 1000 + timeout->tv_nsec / 1'000'000;
    return wait(kq, eventlist, nevents, static_cast<int>(std::min<long>(milliseconds, 1L << 30)));
}
