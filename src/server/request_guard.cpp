#include "server/request_guard.h"

#include <algorithm>
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
    const std::size_t versionStart = line.rfind(' ') + 1;
    if (methodEnd == std::string_view::npos || methodEnd == 0 || versionStart <= methodEnd + 1) {
        return false;
    }
    const std::string_view method = line.substr(0, methodEnd);
    const std::string_view version = line.substr(versionStart);
    return startsWith(version, protocol) && version.size() > protocol.size() &&
           std::isdigit(static_cast<unsigned char>(version[protocol.size()])) != 0 &&
           std::all_of(method.begin(), method.end(), isTokenCharacter);
}

bool isTlsGreeting(std::string_view request) { return startsWith(request, "\x16\x03"); }

}  // namespace corvane
