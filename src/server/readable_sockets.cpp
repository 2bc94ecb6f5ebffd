#include "server/readable_sockets.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/waiting.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool fitsInSet(int sock) { return sock >= 0 && sock < FD_SETSIZE; }

bool isEqual(const fd_set& a, const fd_set& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

void ReadableSockets::prepare() {
    events_.reserve(FD_SETSIZE);  // what is listed once must not be lost for want of memory
    queue_.open(heldSignals());
}

int ReadableSockets::wait(int nfds, const fd_set& watched, const Deadline& deadline) {
    const bool isQueued = watchOnly(nfds, watched);
    const Deadline until = readableCount_ == 0 ? deadline : steady_clock::time_point();
    if (isQueued) {
        if (const int result = waitForEvents(until); result != -1 || errno == EINTR) {
            return result;
        }
    }
    fd_set found = watched;
    const int result = waitForSockets(nfds, &found, nullptr, until);
    for (int sock = 0; sock < nfds && result > 0; ++sock) {
        if (FD_ISSET(sock, &found)) {
            add(sock);
        }
    }
    return result == -1 || readableCount_ == 0 ? result : 1;
}

// Returns false when the event queue cannot tell of all of them.
bool ReadableSockets::watchOnly(int nfds, const fd_set& watched) {
    if (isEqual(watched, watched_)) {
        return true;
    }
    bool areQueued = true;
    for (int sock = 0; sock < std::max(nfds, end_); ++sock) {
        if (!FD_ISSET(sock, &watched)) {
            if (FD_ISSET(sock, &watched_)) {
                queue_.unwatch(sock);
            }
            forget(sock);
        } else if (!FD_ISSET(sock, &watched_)) {
            if (queue_.watch(sock)) {
                FD_SET(sock, &watched_);
            } else {
                areQueued = false;
            }
        }
    }
    end_ = nfds;
    return areQueued;
}

int ReadableSockets::waitForEvents(const Deadline& deadline) {
    prepareToWait();
    std::optional<milliseconds> limit;
    if (deadline) {
        limit = std::chrono::ceil<milliseconds>(timeUntil(*deadline));
    }
    const int count = queue_.wait(limit, events_);
    for (const auto [sock, needsRearm] : events_) {
        if (FD_ISSET(sock, &watched_)) {
            add(sock);
            if (needsRearm) {
                FD_SET(sock, &more_);
            }
        }
    }
    if (count == -1) {
        const int error = errno;
        errno = deliverPendingSignals() ? EINTR : error;
        return -1;
    }
    return readableCount_ == 0 ? 0 : 1;
}

void ReadableSockets::emptied(int sock) {
    if (!fitsInSet(sock)) {
        return;
    }
    if (FD_ISSET(sock, &more_)) {
        askAgain(sock);
    } else {
        remove(sock);
    }
}

void ReadableSockets::askAgain(int sock) {
    if (!fitsInSet(sock)) {
        return;
    }
    remove(sock);
    FD_CLR(sock, &more_);
    if (FD_ISSET(sock, &watched_) && !queue_.rearm(sock)) {
        FD_CLR(sock, &watched_);
    }
}

void ReadableSockets::forget(int sock) {
    if (!fitsInSet(sock)) {
        return;
    }
    FD_CLR(sock, &watched_);
    remove(sock);
    FD_CLR(sock, &more_);
}

void ReadableSockets::add(int sock) {
    if (!FD_ISSET(sock, &readable_)) {
        FD_SET(sock, &readable_);
        ++readableCount_;
    }
}

void ReadableSockets::remove(int sock) {
    if (FD_ISSET(sock, &readable_)) {
        FD_CLR(sock, &readable_);
        --readableCount_;
    }
}

}  // namespace corvane
