// What a server can be told before it starts. The program fills it from its configuration file (see
// app/settings.h); the values here are those of a server that nobody configures.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

struct ServerOptions {
    /// IPv4 in dotted form or a host name; empty for all interfaces.
    std::string address;
    /// TCP port, 0 to 65535; 0 lets the system choose. This default is not the program's (54321):
    /// a server made in a test or by another program must not get in the way of a running one.
    int port = 10067;
    /// Seconds without any socket event after which process() ends; 0 for never.
    int inactivity = 0;
    /// Kept for the configuration; nothing depends on it.
    bool closeOnFatal = false;
    /// Logs every byte of every request at level DEBUG.
    bool debugRequestRead = false;
    /// Seconds that a started request, and then its reply, may take; 0 for any time.
    int requestTimeout = 0;
    /// Bytes that a request may have without its terminator; 0 for any number.
    int maxRequest = 0;
    /// Serves HTTP request lines like any unknown command instead of refusing the connection.
    bool allowHttp = false;
    /// Closes connections from users other than the server's own and root, and those whose user
    /// cannot be told, before anything is read.
    bool sameUser = false;
    /// The commands that are served, in their exact spelling; nothing for all of them, an empty
    /// list for none.
    std::optional<std::vector<std::string>> allowedCommands;
    /// Whether a client's disconnection stops the server: 0 never, 2 when it was the last client,
    /// any other number always.
    int shutdownOnDisconnect = 0;
};

}  // namespace corvane
