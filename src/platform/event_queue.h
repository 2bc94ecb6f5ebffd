// The system's own list of sockets that have become readable, which a silent socket costs nothing:
// epoll(7) on Linux. On macOS there is none yet, and the caller waits with select.
// One file per system implements it: event_queue_linux.cpp and event_queue_macos.cpp.
#pragma once

#include <signal.h>

#include <chrono>
#include <optional>
#include <vector>

namespace corvane::platform {

/// A socket that can be read.
struct SocketEvent {
    int sock;
    /// Its end, or something else that is no plain bytes, may have come together with bytes: when
    /// these have been taken, the rest is only listed when it is asked for anew.
    bool hasMore;
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
    /// pending. Does nothing when it is open; where it fails, so does everything else.
    void open(const sigset_t& signals);
    /// Lists a socket once each time that something arrives in it, and now if something is there
    /// already. Returns false, with errno, when that cannot be done.
    bool watch(int sock);
    /// Lists a watched socket now if there is something in it. Returns false when it is not
    /// watched.
    bool askAgain(int sock);
    /// No longer lists a socket. One that is closed needs no such call.
    void ignore(int sock);

    /// Waits until a socket is listed, for at most `limit`, and fills `events` with all that are
    /// listed. They may be out of date. Returns how many they are, or -1 with errno: EINTR when a
    /// signal is pending or was handled. `events` is filled then as well.
    int wait(std::optional<std::chrono::milliseconds> limit, std::vector<SocketEvent>& events);

  private:
    // Not used on macOS.
    [[maybe_unused]] int queue_ = -1;
    [[maybe_unused]] int signals_ = -1;
};

}  // namespace corvane::platform
