// The only places where signals reach the program: SIGTERM, SIGINT and SIGCHLD stay blocked while
// it works, so that their handlers may log and close sockets directly without ever interrupting the
// logging library or the allocator. One wait is outside, and holds signals up: the look-up of a
// host name at the start.
#pragma once

#include <signal.h>
#include <sys/select.h>

#include <chrono>
#include <optional>

namespace corvane {

/// Sets what is done before every wait and before every fork: the log writes its pending lines
/// there.
void beforeEveryWait(void (*action)() noexcept);

/// Does it; for waits that are none of this module's, and for forks.
void prepareToWait();

/// Blocks the three signals from now on, except inside the waits of this module and after one of
/// the server's event queue.
void deliverSignalsOnlyInWaits();

bool signalsAreHeld();

/// SIGTERM, SIGINT and SIGCHLD.
const sigset_t& heldSignals();

/// Runs the handlers of signals that have arrived meanwhile; returns whether there were any. For
/// work that goes on for long without a wait, at a point where its sockets may be closed.
bool deliverPendingSignals();

/// Notes that a termination signal has arrived, for work that waits on something else than the
/// server's sockets.
void requestStop();
/// Takes that back.
void withdrawStop();
bool stopRequested();

/// Runs the handlers of signals that have arrived, and returns whether the program has to stop,
/// with errno EINTR then: for loops that may last, once for each block. It costs one system call.
bool interrupted();

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

/// The deadline that is `seconds` away; none for 0.
Deadline deadlineAfter(int seconds);

/// Whether it has passed; one that is not set never does.
bool hasPassed(const Deadline& deadline);
/// The one that passes first.
Deadline earlier(const Deadline& a, const Deadline& b);

/// The time until a deadline; 0 when it has passed.
std::chrono::nanoseconds timeUntil(std::chrono::steady_clock::time_point deadline);

/// pselect(2) with signals let in, after what beforeEveryWait() was given was done. Without a
/// deadline it waits for ever; for one that is more than three years away (100,000,000 s) only as
/// long as that. Returns what pselect returns; -1 with EINTR after a signal.
int waitForSockets(int nfds, fd_set* readable, fd_set* writable, const Deadline& deadline);

enum class Direction { Read, Write };

/// Waits until one socket, pipe or device is ready, or a signal was handled: the caller tries its
/// call again either way and learns from it what has become of it. Returns false when the deadline
/// has passed. Any descriptor will do, also one that is too large for pselect(2).
bool waitForSocket(int fd, Direction direction, const Deadline& deadline);

}  // namespace corvane
