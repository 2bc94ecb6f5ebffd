// Sockets of the benchmark programs: blocking IPv4 connections on the loopback address. Every
// failure is a std::system_error, so that a broken run never looks like a fast one.
#pragma once

#include <sys/uio.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::bench {

/// Owner of one descriptor.
class Descriptor {
  public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    int get() const { return descriptor_; }
    void close();

  private:
    int descriptor_;
};

/// Throws std::system_error with the current errno.
[[noreturn]] void throwErrno(const char* action);

Descriptor connectTo(int port);

/// A listening socket on a port that the system chooses; `port` receives its number.
Descriptor listenOnLoopback(int& port);

void setNoDelay(int socket);

void sendAll(int socket, std::string_view bytes);

/// Sends the parts one behind the other with as few calls as possible; the parts are consumed.
void sendAll(int socket, std::span<iovec> parts);

iovec asPart(std::string_view bytes);

/// Receives replies that end with a terminator byte and checks that each is the reply hoped for.
class ReplyReader {
  public:
    /// `expected` must occur in the first 512 bytes of every reply.
    ReplyReader(char terminator, std::string expected);

    /// Receives one complete reply; returns its size with the terminator.
    std::size_t receive(int socket);

    /// Receives what is there once and adds its size to `size`; true when the reply is complete.
    bool receiveSome(int socket, std::size_t& size);

  private:
    void check(std::string_view beginning) const;

    char terminator_;
    std::string expected_;
    std::vector<char> block_;
};

}  // namespace corvane::bench
