// The client's side of a connection to a server under test. No call waits for ever: what takes too
// long, like any failure that the test did not ask for, is thrown as std::runtime_error.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane::test {

class ClientSocket {
  public:
    /// Connects to the loopback address. A receive buffer of some bytes makes the server notice
    /// soon that the client does not read; 0 leaves the system's size. `host` is the last number of
    /// the loopback address to come from: each has ports of its own, of which a great many
    /// connections in a row need more than one has. Only Linux has others than 127.0.0.1.
    explicit ClientSocket(int port, int receiveBuffer = 0, int host = 1);
    ~ClientSocket() { close(); }
    ClientSocket(ClientSocket&& other) noexcept;
    ClientSocket& operator=(ClientSocket&& other) noexcept;
    ClientSocket(const ClientSocket&) = delete;
    ClientSocket& operator=(const ClientSocket&) = delete;

    /// The client's address as the server's log shows it.
    const std::string& address() const { return address_; }

    /// Sends all bytes.
    void send(std::string_view bytes);
    /// Sends one byte out of band.
    void sendUrgent(char byte);
    /// The same as send() towards a server that may be gone; returns whether everything was taken.
    bool trySend(std::string_view bytes);
    /// Sends what fits into the buffers without waiting; returns how much that was.
    std::size_t sendWithoutWaiting(std::string_view bytes);

    /// The next reply without its zero byte.
    std::string reply();
    /// The same; none when the connection ends before.
    std::optional<std::string> tryReply();
    /// Sends a request and its terminator, and returns the reply.
    std::string request(std::string_view text);
    /// Takes at most `most` of the bytes that have arrived, after a wait for some; 0 at the end of
    /// the connection.
    std::size_t take(std::size_t most);
    /// Whether bytes, or the end of the connection, can be read within `milliseconds`.
    bool hasSomething(int milliseconds = 0) const;
    /// Everything up to the end of the connection, whether it was closed or reset.
    std::string untilEnd();
    /// Whether the connection has ended, without bytes before; waits for that.
    bool isEnded() { return untilEnd().empty(); }

    /// Whether the other side has reset the connection, if only after its regular end. Tells it
    /// once.
    bool wasReset();

    /// Half-closes the connection: the server sees its end, replies still arrive.
    void finishSending();
    void close();
    /// Closes it so that the server gets a reset.
    void reset();

  private:
    /// Reads more into received_; false at the end of the connection.
    bool receiveMore();
    /// The same for at most `most` bytes; returns how many came.
    std::size_t receive(std::size_t most);

    int number_ = -1;
    std::string address_;
    std::string received_;
};

}  // namespace corvane::test
