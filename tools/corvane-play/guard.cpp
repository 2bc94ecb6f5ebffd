#include "corvane-play/guard.h"

#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>

#include "fileutil/properties.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::play {

std::string makeSecret() {
    std::array<unsigned char, 16> bits{};
    if (::getentropy(bits.data(), bits.size()) != 0) {
        throw IOException("no random numbers", errno);
    }
    std::string digits;
    for (const unsigned char byte : bits) {
        digits += format("%02x", byte);
    }
    return digits;
}

bool isSameSecret(std::string_view given, std::string_view expected) {
    if (given.size() != expected.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < given.size(); ++i) {
        difference |=
            static_cast<unsigned char>(given[i]) ^ static_cast<unsigned char>(expected[i]);
    }
    return difference == 0;
}

bool isOwnHost(std::string_view host, std::uint16_t port) {
    const std::string name = corvane::tolower(std::string(host));
    const std::string end = concatenate(":", std::to_string(port));
    return name == "127.0.0.1" + end || name == "localhost" + end;
}

bool isAllowedOrigin(std::string_view origin, std::string_view host, bool ownPage,
                     const std::vector<std::string>& allowed) {
    const std::string own = concatenate("http://", host);
    return (ownPage && origin == own) ||
           std::find(allowed.begin(), allowed.end(), origin) != allowed.end();
}

bool isOrigin(std::string_view text) {
    const std::size_t colon = text.find("://");
    if (colon == std::string_view::npos || colon == 0) {
        return false;
    }
    const std::string_view scheme = text.substr(0, colon);
    const std::string_view place = text.substr(colon + 3);
    const auto isLower = [](unsigned char c) {
        return std::isupper(c) == 0 && std::isgraph(c) != 0;
    };
    return !place.empty() && place.find_first_of("/?#@\\*,;\"' ") == std::string_view::npos &&
           std::all_of(text.begin(), text.end(), isLower) &&
           scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+-.") ==
               std::string_view::npos;
}

}  // namespace corvane::play
