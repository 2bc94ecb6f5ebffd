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

    /// Opens the queue, unless it is open. Where that fails, so does everything else.
    void open();
    /// Lists a socket once each time that something arrives in it, and now if something is there
    /// already. Returns false, with errno, when that cannot be done.
    bool watch(int sock);
    /// Lists a watched socket now if there is something in it. Returns false when it is not
    /// watched.
    bool askAgain(int sock);
    /// No longer lists a socket. One that is closed needs no such call.
    void ignore(int sock);

    /// Waits until a socket is listed, with the signal mask `mask` unless it is null, for at most
    /// `limit`, and fills `events` with all that are listed. They may be out of date. Returns how
    /// many they are, or -1 with errno, EINTR after a signal.
    int wait(std::optional<std::chrono::milliseconds> limit, const sigset_t* mask,
             std::vector<SocketEvent>& events);

  private:
    [[maybe_unused]] int queue_ = -1;  // macOS has no use for it
};

}  // namespace corvane::platform
