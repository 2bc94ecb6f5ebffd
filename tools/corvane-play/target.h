// A host and a port that the bridge may connect to, and their texts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::play {

struct Target {
    std::string
        host;  ///< a name or an address, in lower case; an IPv6 address without its brackets
    std::uint16_t port = 0;

    bool operator==(const Target&) const = default;
};

/// A port from 1 to 65535 in decimal digits; nothing for any other text.
std::optional<std::uint16_t> parsePort(std::string_view text);

/// "HOST:PORT" or "[IPV6]:PORT"; nothing when the host is empty or holds what no host name and no
/// address has.
std::optional<Target> parseTarget(std::string_view text);

/// The text that parseTarget() reads.
std::string toString(const Target& target);

}  // namespace corvane::play
