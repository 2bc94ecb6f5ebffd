#include "cvnwinfo/title.h"

#include <algorithm>

namespace corvane::wintool {

namespace {

constexpr std::size_t quotedLimit = 64;
constexpr std::string_view ellipsis = "...";

bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

bool isControl(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x20 || value == 0x7F;
}

// The longest beginning of `text` with at most `limit` bytes that does not cut a character.
std::string_view beginning(std::string_view text, std::size_t limit) {
    while (limit > 0 && isContinuationByte(text[limit])) {
        --limit;
    }
    return text.substr(0, limit);
}

}  // namespace

std::optional<std::size_t> chooseTitle(std::span<const std::string> titles,
                                       std::string_view wanted) {
    if (wanted.empty()) {
        return std::nullopt;
    }
    auto found = std::find(titles.begin(), titles.end(), wanted);
    if (found == titles.end()) {
        found = std::find_if(titles.begin(), titles.end(), [wanted](const std::string& title) {
            return title.starts_with(wanted);
        });
    }
    if (found == titles.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - titles.begin());
}

std::string latin1ToUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x80) {
            result += byte;
        } else {
            result += static_cast<char>(0xC0U | (value >> 6U));
            result += static_cast<char>(0x80U | (value & 0x3FU));
        }
    }
    return result;
}

std::string inQuotes(std::string_view text) {
    const bool cut = text.size() > quotedLimit;
    std::string result = "'";
    result += cut ? beginning(text, quotedLimit - ellipsis.size()) : text;
    result += cut ? ellipsis : "";
    result += "'";
    std::replace_if(result.begin(), result.end(), isControl, '?');
    return result;
}

}  // namespace corvane::wintool
