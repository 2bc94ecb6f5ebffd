// A client of the server that waits for whole replies and fails when they do not come.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace soak {

class Client {
  public:
    /// Connects. `address` is the last number of the loopback address to come from: every address
    /// has its own ports, of which a great many connections in a row need more than one has.
    explicit Client(int port, int address = 1);
    ~Client();
    Client(Client&& other) noexcept;
    Client& operator=(Client&&) = delete;
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void send(std::string_view bytes) const;
    /// The next reply without its terminator. Fails after ten seconds, and at the end of the
    /// connection.
    std::string reply();
    /// The same; false at the end of the connection.
    bool tryReply(std::string& reply);
    /// Waits until the server has taken everything sent out of its socket.
    void awaitReceived() const;
    /// Sends a request and returns its reply.
    std::string ask(const std::string& request);
    /// Waits until the next reply has begun to arrive, and takes nothing of it.
    void awaitReply() const;
    /// Closes the connection so that the server sees a reset.
    void reset();

  private:
    int socket_;
    std::string received_;
};

/// The reply to a request whose command the server does not know, which tells requests apart.
std::string unknownReply(const std::string& command);

}  // namespace soak
