// Who may use what is served: requests of the page itself, and of nobody else. Any page of the web
// can send requests to the loopback address, and by a name of its own that leads there (DNS
// rebinding) also read the answers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::play {

/// 128 random bits in 32 hexadecimal digits. Throws IOException when the system has none.
std::string makeSecret();

/// Whether two texts are equal, in a time that tells nothing of where they differ.
bool isSameSecret(std::string_view given, std::string_view expected);

/// Whether a Host header names this machine by its loopback address or "localhost", at this port.
bool isOwnHost(std::string_view host, std::uint16_t port);

/// Whether an Origin header is that of the page, served at `host`, or one of the allowed ones.
/// With `ownPage` off only the allowed ones count.
bool isAllowedOrigin(std::string_view origin, std::string_view host, bool ownPage,
                     const std::vector<std::string>& allowed);

/// Whether a text is an origin as a browser sends it: "http://" or "https://" or the scheme of an
/// application, a host, perhaps a port, and nothing behind.
bool isOrigin(std::string_view text);

}  // namespace corvane::play
