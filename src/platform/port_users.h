// Which sockets of this machine use a TCP port, whose they are, and what a process tells about
// itself: for programs that explain a server's state. Everything is as it was at one moment. One
// file per system implements it: port_users_linux.cpp and port_users_macos.cpp.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvane::platform {

struct PortUser {
    /// Waiting for what: a listener, a connection, or one that is closed and has no program any
    /// more.
    enum class State { Listening, Connected, Closed };

    State state = State::Closed;
    /// "127.0.0.1:54321"; the far end of a listener has port 0.
    std::string local;
    std::string remote;
    int remotePort = 0;
    /// Nothing where the system does not tell.
    std::optional<uid_t> user;
    /// Nothing where it belongs to another user, whose processes cannot be looked into.
    std::optional<pid_t> process;
};

/// The sockets over IPv4, and those over IPv6 that take IPv4 as well, whose own port is `port`. On
/// macOS only those of processes that may be looked into.
std::vector<PortUser> portUsers(int port);

struct ProcessInfo {
    /// Full path of the program; empty where it is not told.
    std::string executable;
    /// The name by which it was started, its first argument; empty where that is not told (macOS).
    std::string startedAs;
    std::optional<uid_t> user;
    /// Seconds since 1970 of its start.
    std::optional<std::int64_t> startedAt;
};

/// All fields are empty for a process that is not there.
ProcessInfo processInfo(pid_t process);

/// The full paths of the regular files that a process has opened for writing. Nothing when it may
/// not be looked into.
std::optional<std::vector<std::string>> filesWrittenBy(pid_t process);

}  // namespace corvane::platform
