// The system's own edge-triggered queue of sockets that have become readable, which a silent socket
// costs nothing: epoll(7) on Linux (event_queue_linux.cpp), kqueue(2) on macOS
// (event_queue_macos.cpp), none elsewhere (event_queue_none.cpp).
#pragma once

#include <signal.h>

#include <chrono>
#include <optional>
#include <vector>

namespace corvane::platform {

/// A socket that can be read.
struct SocketEvent {
    int sock;
    /// A hang-up, or something else that is no plain bytes, may have come together with bytes: once
    /// these are drained, the socket has to be re-armed, or the rest is never listed. Always so on
    /// macOS.
    bool needsRearm;
};

class EventQueue {
  public:
    EventQueue() = default;
    ~EventQueue();
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;
    EventQueue(EventQueue&&) = delete;
    EventQueue& operator=(EventQueue&&) = delete;

    /// Opens the queue for a process that keeps `signals` blocked: wait() ends when one of them is
    /// pending. Does nothing when it is open; where it fails, so does everything else. A child of
    /// fork(2) cannot use the queue of its parent: macOS does not hand it on.
    void open(const sigset_t& signals);
    /// Lists a socket once each time that something arrives in it, and now if something is there
    /// already. Returns false, with errno, when that cannot be done.
    bool watch(int sock);
    /// Lists a watched socket now if there is something in it. Returns false when it is not
    /// watched.
    bool rearm(int sock);
    /// No longer lists a socket. One that is closed needs no such call.
    void unwatch(int sock);

    /// Waits until a socket is listed, for at most `limit` or 24.8 days, and fills `events` with
    /// all that are listed. They may be out of date, and there may be none before the time is over.
    /// Returns how many they are, or -1 with errno: EINTR when a signal is pending or was handled.
    /// `events` is filled then as well.
    int wait(std::optional<std::chrono::milliseconds> limit, std::vector<SocketEvent>& events);

  private:
    [[maybe_unused]] int queue_ = -1;  // none in a build without a queue
    // On Linux, a descriptor that can be read while a signal is pending.
    [[maybe_unused]] int signals_ = -1;
    // On macOS, the signals themselves, and whether one was told of that is not pending yet.
    [[maybe_unused]] sigset_t held_{};
    [[maybe_unused]] bool isSignalDue_ = false;
};

}  // namespace corvane::platform
