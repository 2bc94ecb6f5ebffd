// What can be seen of the server on a port of this machine without connecting to it: a connection
// would count, and its end may even stop the server.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "corvanectl/local/log_places.h"

namespace corvane::ctl {

struct ServerState {
    enum class Port {
        Free,
        Corvane,
        /// A program of another name listens.
        Other,
        /// Somebody listens whose process may not be looked into.
        Hidden,
        /// A connection of another program, or one that has just ended, has the port.
        Connection,
    };

    Port port = Port::Free;
    std::optional<pid_t> process;
    std::string executable;
    /// A name, or a number where there is none; empty for unknown. So are the texts that follow.
    std::string user;
    std::optional<std::int64_t> startedAt;
    std::string address;
    std::string version;
    /// Its executable's directory as it knows it, with a "/" at its end.
    std::string directory;
    std::string configuration;
    std::string log;
    /// The far ends.
    std::vector<std::string> connections;

    bool isRunning() const { return port == Port::Corvane || port == Port::Hidden; }
};

/// `query` says which port, and where else than among the server's open files its log may be.
ServerState serverState(const LogQuery& query);

/// The version in the last line of a server's start, if that was written at or after `startedAt`;
/// only lines of the default layout tell when they were written. Empty for unknown.
std::string versionIn(const std::string& lines, std::int64_t startedAt);

/// The configuration file in a directory; empty for none.
std::string configurationIn(const std::string& directory);

}  // namespace corvane::ctl
