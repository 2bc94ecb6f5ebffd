// Tells requests that never came from an application: a web page in a browser on this machine can
// make it connect to the server and send an HTTP request whose body looks like commands.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "text/exception.h"

namespace corvane {

/// A request that the server refuses; `line` is its first line, as far as it is logged and
/// answered. No limit holds for what a page sends, so one must hold for what is kept of it.
class ForeignRequest : public Exception {
  public:
    static constexpr std::size_t longestLine = 1023;

    explicit ForeignRequest(std::string_view firstLine);

    std::string line;
};

/// Whether a complete first line (without its line end) is an HTTP request line:
/// "METHOD target HTTP/version".
bool isHttpRequestLine(std::string_view line);

/// Whether a request begins with a method that browsers use, a blank and "/". To be asked when its
/// first line is over in any way: a line end, a terminator, the end of the connection, a limit.
/// No command has such a name, so nothing is lost by refusing it without a version, too.
bool isHttpBeginning(std::string_view request);

// The next two are asked with all bytes received from the first one of a request on: their
// terminator is among the first bytes that tell, so what was received behind it must be there, too.

/// Whether a request begins like a TLS connection: a handshake record of SSL 3 or TLS, or the
/// greeting in the form of SSL 2 ("\x80", a length, "\x01\x03"), behind which WebRTC can hide.
bool isTlsGreeting(std::string_view received);

/// Whether it is a message of STUN, by which WebRTC speaks to relays and other browsers. Its first
/// byte is 0 as a rule; ten bytes tell.
bool isStunMessage(std::string_view received);

}  // namespace corvane
