// One connection, one request, one reply.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane::ctl {

struct Endpoint {
    /// IPv4 in dotted form or a host name.
    std::string host = "127.0.0.1";
    int port = 54321;
    /// Seconds for the whole exchange; 0 for any time.
    int timeout = 60;
};

/// Sends the request and returns the reply without its terminating zero byte; nothing when the
/// server closes the connection instead. Throws Exception when there is no connection, the
/// connection breaks, or the time is over.
std::optional<std::string> exchange(const Endpoint& endpoint, std::string_view request);

}  // namespace corvane::ctl
