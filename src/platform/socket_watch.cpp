#include "platform/socket_watch.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>

namespace corvane {

// What is listed once must not be lost for want of memory.
SocketWatch::SocketWatch() {
    events_.reserve(FD_SETSIZE);
    unqueued_.reserve(FD_SETSIZE);
}

void SocketWatch::open() { queue_.open(heldSignals()); }

void SocketWatch::watch(int sock) {
    if (FD_ISSET(sock, &watched_)) {
        return;
    }
    FD_SET(sock, &watched_);
    end_ = std::max(end_, sock + 1);
    if (!queue_.watch(sock)) {
        unqueued_.push_back(sock);
    }
}

void SocketWatch::unwatch(int sock) {
    if (FD_ISSET(sock, &watched_)) {
        forget(sock);
        queue_.unwatch(sock);
    }
}

void SocketWatch::forget(int sock) {
    FD_CLR(sock, &watched_);
    std::erase(unqueued_, sock);
}

void SocketWatch::rearm(int sock) {
    if (FD_ISSET(sock, &watched_) && !queue_.rearm(sock) &&
        std::find(unqueued_.begin(), unqueued_.end(), sock) == unqueued_.end()) {
        unqueued_.push_back(sock);
    }
}

int SocketWatch::wait(const Deadline& deadline) {
    if (isWholeSetQueued()) {
        if (const int result = waitInQueue(deadline); result != -1 || errno == EINTR) {
            return result;
        }
    }
    return waitInSelect(deadline);
}

bool SocketWatch::isWholeSetQueued() {
    while (!unqueued_.empty() && queue_.watch(unqueued_.back())) {
        unqueued_.pop_back();
    }
    return unqueued_.empty();
}

int SocketWatch::waitInQueue(const Deadline& deadline) {
    prepareToWait();
    std::optional<std::chrono::milliseconds> limit;
    if (deadline) {
        limit = std::chrono::ceil<std::chrono::milliseconds>(timeUntil(*deadline));
    }
    const int count = queue_.wait(limit, events_);
    if (count == -1) {
        const int error = errno;
        errno = deliverPendingSignals() ? EINTR : error;
    }
    return count;
}

int SocketWatch::waitInSelect(const Deadline& deadline) {
    events_.clear();
    fd_set readable = watched_;
    const int count = waitForSockets(end_, &readable, nullptr, deadline);
    for (int sock = 0; sock < end_ && count > 0; ++sock) {
        if (FD_ISSET(sock, &readable)) {
            events_.push_back({sock, false});
        }
    }
    return count;
}

}  // namespace corvane
