// The least that any single-threaded select server can do, as a yardstick: wait, receive, answer.
// One socket is served per wake-up, clients before the listener and earlier clients first.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace corvane::bench {

/// Answers one request (without its terminator) on the socket.
using Handler = std::function<void(int socket, std::string_view request)>;

struct FloorOptions {
    bool noDelay = false;  // for replies of more than one segment
};

/// Prints "Listening on 127.0.0.1:PORT" and serves for ever.
[[noreturn]] void serve(const Handler& handler, FloorOptions options);

/// A byte buffer that grows without clearing its new part, which for large requests would cost as
/// much as receiving them.
class Buffer {
  public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer();

    /// Room for at least `wanted` bytes behind the first `used`; throws std::bad_alloc.
    char* room(std::size_t used, std::size_t wanted);
    const char* data() const { return data_; }

  private:
    char* data_ = nullptr;
    std::size_t capacity_ = 0;
};

constexpr std::size_t BLOCK = 64UL * 1024;

}  // namespace corvane::bench
