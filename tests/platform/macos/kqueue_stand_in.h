// A kqueue made of an epoll, for tests on Linux. It keeps the rules of the real one that the event
// queue has to live with, as its published source shows them (xnu bsd/kern/kern_event.c,
// kern_sig.c, kern_time.c):
// - A filter is gone when its descriptor is closed; one that is not there cannot be deleted
// (ENOENT).
// - The first change that fails ends the call; those behind it are not made.
// - A filter with EV_CLEAR tells of what is there when it is added, and then of what arrives.
// - The signal filter tells of signals that are blocked and leaves them pending, but not of those
//   that were pending before it was added, nor of those that are sent to a thread.
// - A wait of more than 100,000,000 seconds is an error (EINVAL).
#pragma once

namespace corvane::standins {

/// Has the queues tell of a signal that does not become pending: the moment at which the kernel has
/// told of one and not yet delivered it. At the next wait of each queue.
void tellOfSignal(int sig);

/// The time limit of the last wait in seconds, -1 for none.
long lastTimeout();

}  // namespace corvane::standins
