#include "corvane-play/percent.h"

#include <cctype>
#include <charconv>
#include <system_error>

#include "text/strings.h"

namespace corvane::play {
namespace {

constexpr std::size_t escapeDigits = 2;

}  // namespace

std::optional<std::string> decodePercent(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i];
            continue;
        }
        const std::string_view digits = text.substr(i + 1, escapeDigits);
        unsigned char byte = 0;
        const char* const end = digits.data() + digits.size();
        const auto [stop, error] = std::from_chars(digits.data(), end, byte, 16);
        if (digits.size() != escapeDigits || error != std::errc() || stop != end) {
            return std::nullopt;
        }
        plain += static_cast<char>(byte);
        i += escapeDigits;
    }
    return plain;
}

std::string escapeComponent(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain =
            byte < 0x80 &&
            (std::isalnum(byte) != 0 || std::string_view("-._~").find(c) != std::string_view::npos);
        escaped += isPlain ? std::string(1, c) : format("%%%02X", byte);
    }
    return escaped;
}

}  // namespace corvane::play
