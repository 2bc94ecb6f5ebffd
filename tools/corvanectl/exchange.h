// Connections to the server: requests go out, replies come in, within a time limit.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_desc.h"
#include "platform/waiting.h"

namespace corvane::ctl {

struct Endpoint {
    /// IPv4 in dotted form or a host name.
    std::string host = "127.0.0.1";
    int port = 54321;
    /// Seconds for the whole exchange; 0 for any time.
    int timeout = 60;
};

/// Told, while data is under way, how many bytes have been sent and received on the connection.
using Observer = std::function<void(std::size_t sent, std::size_t received)>;

/// Whatever fails throws Exception, also when the time is over.
class Connection {
  public:
    explicit Connection(const Endpoint& endpoint, Observer observer = {});

    /// A server that has closed its side already is no failure: it may have answered before.
    void send(std::string_view bytes);

    /// The next reply without its terminating zero byte; nothing when the server has closed the
    /// connection instead.
    std::optional<std::string> receive();

    /// This end as the server's log names it, "127.0.0.1:40000".
    std::string ownAddress() const;
    /// Whether both ends have the same address, so that the server's files may be in reach.
    bool staysOnThisMachine() const;

    /// Gives the endpoint's time once more, for the next request.
    void restartTime();

  private:
    void connectTo(const Endpoint& endpoint);
    void observe() const;
    void wait(Direction direction) const;
    [[noreturn]] void fail(const char* what, int error) const;

    std::string where_;
    int timeout_;
    Observer observer_;
    Deadline deadline_;
    FileDesc sock_;
    in_addr peer_{};
    std::string unread_;  // what has come behind the last reply
    std::size_t sent_ = 0;
    std::size_t received_ = 0;
};

/// One connection, one request, one reply: as Connection's, without the zero byte, or nothing.
std::optional<std::string> exchange(const Endpoint& endpoint, std::string_view request,
                                    Observer observer = {});

}  // namespace corvane::ctl
