#include "corvanectl/utf8.h"

namespace corvane::ctl {
namespace {

constexpr char32_t lastCharacter = 0x10ffff;

unsigned byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

std::size_t lengthByFirst(unsigned first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xc2 || first > 0xf4) {
        return 0;
    }
    return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

}  // namespace

std::size_t utf8Length(std::string_view text) {
    const std::size_t length = lengthByFirst(byteAt(text, 0));
    if (length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xc0) != 0x80) {
            return 0;
        }
    }
    const char32_t character = length < 3 ? U' ' : decodeUtf8(text.substr(0, length));
    const bool isOverlong = character < (length == 4 ? 0x10000U : length == 3 ? 0x800U : 0U);
    const bool isSurrogate = character >= 0xd800 && character <= 0xdfff;
    return isOverlong || isSurrogate || character > lastCharacter ? 0 : length;
}

char32_t decodeUtf8(std::string_view character) {
    const unsigned first = byteAt(character, 0);
    if (character.size() == 1) {
        return first;
    }
    char32_t value = first & (0x7fU >> character.size());
    for (std::size_t i = 1; i < character.size(); ++i) {
        value = value << 6 | (byteAt(character, i) & 0x3f);
    }
    return value;
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t size = utf8Length(text);
        if (size == 0) {
            return false;
        }
        text.remove_prefix(size);
    }
    return true;
}

}  // namespace corvane::ctl
