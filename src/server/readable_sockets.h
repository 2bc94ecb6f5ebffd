// Which of the server's sockets have something to be received. What a wait has found is remembered
// until it has been taken, so that under load a wait only asks for what is new.
#pragma once

#include <sys/select.h>

#include <vector>

#include "platform/event_queue.h"
#include "platform/waiting.h"

namespace corvane {

class ReadableSockets {
  public:
    /// Takes the descriptors that waiting uses; without them it is only slower. To be called after
    /// deliverSignalsOnlyInWaits(): a wait would end for a signal that is blocked, but not
    /// delivered.
    void prepare();

    /// Waits until one of the `watched` sockets, all below `nfds`, is readable; not at all when one
    /// is still known to be. Lets signals in, and writes pending log lines before. Returns 1; 0
    /// when the deadline has passed, or earlier; -1 with errno, EINTR after a signal.
    int wait(int nfds, const fd_set& watched, const Deadline& deadline);

    /// The sockets that were readable at the end of the last wait, without those that have been
    /// emptied since.
    const fd_set& found() const { return readable_; }

    // A number that no descriptor in a set can have is left alone by the three.

    /// To be called when a receive took all that was there, or found nothing.
    void emptied(int sock);
    /// To be called when something was taken from a socket and it is not known whether more is
    /// there.
    void askAgain(int sock);
    /// To be called when a socket is closed.
    void forget(int sock);

  private:
    bool watchOnly(int nfds, const fd_set& watched);
    int waitForEvents(const Deadline& deadline);
    void add(int sock);
    void remove(int sock);

    platform::EventQueue queue_;
    std::vector<platform::SocketEvent> events_;
    /// All sockets in the sets are below this.
    int end_ = 0;
    fd_set watched_{};
    fd_set readable_{};
    int readableCount_ = 0;
    /// Those that may have more than the bytes they were found readable for.
    fd_set more_{};
};

}  // namespace corvane
