#include "corvane-play/target.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <system_error>

#include "fileutil/properties.h"

namespace corvane::play {
namespace {

constexpr std::size_t longestHost = 253;  // RFC 1035, 2.3.4, without the last dot

bool isHostCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '.' || c == '_';
}

bool isAddressCharacter(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0 || c == ':' || c == '.';
}

}  // namespace

std::optional<std::uint16_t> parsePort(std::string_view text) {
    std::uint16_t port = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc() || stop != end || port == 0) {
        return std::nullopt;
    }
    return port;
}

std::optional<Target> parseTarget(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const auto port = parsePort(text.substr(colon + 1));
    std::string_view host = text.substr(0, colon);
    const bool isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (isBracketed) {
        host = host.substr(1, host.size() - 2);
    }
    if (!port || host.empty() || host.size() > longestHost ||
        !std::all_of(host.begin(), host.end(),
                     isBracketed ? isAddressCharacter : isHostCharacter)) {
        return std::nullopt;
    }
    return Target{corvane::tolower(std::string(host)), *port};
}

std::string toString(const Target& target) {
    const bool isIpv6 = target.host.find(':') != std::string::npos;
    return (isIpv6 ? "[" + target.host + "]" : target.host) + ":" + std::to_string(target.port);
}

}  // namespace corvane::play
