// What one page, or many connections at once, may take of the program's memory and time.
#pragma once

#include <chrono>
#include <cstddef>

namespace corvane::play {

struct Limits {
    std::size_t connections = 256;  ///< at once; further ones are closed unread
    std::size_t bridges = 64;       ///< at once; further ones are refused
    std::size_t header = 16384;     ///< bytes of a request
    std::size_t block = 65536;      ///< bytes that a bridge holds on their way in each direction
    /// For a request to be complete, and for a reply to leave.
    std::chrono::seconds request{30};
    /// For a connection to a target to be established.
    std::chrono::seconds connect{10};
    /// For the opening and the closing handshake of a WebSocket.
    std::chrono::seconds handshake{10};
    /// Without a byte from the page; it is pinged after half of it.
    std::chrono::seconds silence{300};
    /// For the rest of what a target sends, after the page has gone.
    std::chrono::seconds linger{10};
    /// Without a page until the program ends.
    std::chrono::seconds pageGone{5};
};

}  // namespace corvane::play
