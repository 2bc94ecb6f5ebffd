#include "server/request_guard.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "text/strings.h"

namespace corvane {
namespace {

// RFC 9110, 5.6.2: the characters of a method.
bool isTokenCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

}  // namespace

ForeignRequest::ForeignRequest(std::string_view firstLine)
    : Exception("refused request"), line(firstLine.substr(0, longestLine)) {}

bool isHttpRequestLine(std::string_view line) {
    constexpr std::string_view protocol = "HTTP/";
    const std::size_t methodEnd = line.find(' ');
    if (methodEnd == std::string_view::npos || methodEnd == 0) {
        return false;
    }
    const std::size_t versionStart = line.rfind(' ') + 1;
    if (versionStart <= methodEnd + 1) {
        return false;
    }
    const std::string_view method = line.substr(0, methodEnd);
    const std::string_view version = line.substr(versionStart);
    return startsWith(version, protocol) && version.size() > protocol.size() &&
           std::isdigit(static_cast<unsigned char>(version[protocol.size()])) != 0 &&
           std::all_of(method.begin(), method.end(), isTokenCharacter);
}

bool isHttpBeginning(std::string_view request) {
    // RFC 9110, 9.3, and RFC 5789.
    constexpr std::array<std::string_view, 9> methods = {
        "GET", "HEAD", "POST", "PUT", "DELETE", "CONNECT", "OPTIONS", "TRACE", "PATCH"};
    constexpr std::string_view behind = " /";
    constexpr std::size_t longest = std::string_view("CONNECT /").size();
    const std::size_t end = request.substr(0, longest).find(behind);
    return end != std::string_view::npos &&
           std::find(methods.begin(), methods.end(), request.substr(0, end)) != methods.end();
}

bool isTlsGreeting(std::string_view received) {
    constexpr std::string_view record = "\x16\x03";
    constexpr std::size_t lengthBytes = 2;
    constexpr std::string_view hello = "\x01\x03";
    return startsWith(received, record) ||
           (startsWith(received, "\x80") && received.size() > lengthBytes &&
            startsWith(received.substr(lengthBytes), hello));
}

bool isStunMessage(std::string_view received) {
    // RFC 8489, 5: the magic cookie follows the type and the length. Between browsers the length of
    // the whole comes first (RFC 4571).
    constexpr std::string_view cookie = "\x21\x12\xA4\x42";
    constexpr std::size_t cookieAt = 4;
    constexpr std::size_t framedCookieAt = 6;
    constexpr unsigned char typeBits = 0xC0;  // clear in the first byte of every message
    const auto isMessage = [&](std::size_t start, std::size_t at) {
        return received.size() >= at + cookie.size() &&
               (static_cast<unsigned char>(received[start]) & typeBits) == 0 &&
               startsWith(received.substr(at), cookie);
    };
    return isMessage(0, cookieAt) || isMessage(framedCookieAt - cookieAt, framedCookieAt);
}

}  // namespace corvane
