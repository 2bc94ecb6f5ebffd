// Which sockets have something to be received: the system's edge-triggered event queue tells, or
// pselect where there is none or it fails. The set of watched sockets is kept here and changes only
// when a socket is accepted, paused or closed, so that a silent one costs a wait nothing.
#pragma once

#include <sys/select.h>

#include <vector>

#include "platform/event_queue.h"
#include "platform/waiting.h"

namespace corvane {

/// Its sockets are descriptors that fit into an fd_set.
class SocketWatch {
  public:
    SocketWatch();

    /// Opens the event queue; without it waiting is only slower. To be called after
    /// deliverSignalsOnlyInWaits(): a wait would end for a signal that is blocked, but not
    /// delivered.
    void open();

    /// From now on the socket is listed once each time that something arrives in it, and by the
    /// next wait if something is there already.
    void watch(int sock);
    /// Lists it no more.
    void unwatch(int sock);
    /// The same, to be called just before the socket is closed, which takes it out of the queue.
    void forget(int sock);
    /// Has a watched socket listed again by the next wait if something is left in it. Without the
    /// queue that goes without saying.
    void rearm(int sock);

    /// Waits until watched sockets are listed and fills events() with them; they may be out of
    /// date. Lets signals in, and calls prepareToWait() before. Returns how many they are; 0 when
    /// the deadline has passed, or earlier; -1 with errno, EINTR after a signal, when events() is
    /// filled as well.
    int wait(const Deadline& deadline);

    const std::vector<platform::SocketEvent>& events() const { return events_; }

  private:
    bool isWholeSetQueued();
    int waitInQueue(const Deadline& deadline);
    int waitInSelect(const Deadline& deadline);

    platform::EventQueue queue_;
    std::vector<platform::SocketEvent> events_;
    /// Watched sockets that the queue has not taken yet; while there are any, pselect waits.
    std::vector<int> unqueued_;
    fd_set watched_{};
    /// All watched sockets are below this.
    int end_ = 0;
};

}  // namespace corvane
