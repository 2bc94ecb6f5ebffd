// Takes UTF-8 apart, character by character, as names on a terminal and strings of JSON need it.
#pragma once

#include <cstddef>
#include <string_view>

namespace corvane::ctl {

/// The number of bytes of the character that `text` begins with; 0 when its first byte begins none:
/// overlong forms, surrogates and what is beyond U+10FFFF are none. `text` must not be empty.
std::size_t utf8Length(std::string_view text);

/// The character of utf8Length() bytes, which must not be 0.
char32_t decodeUtf8(std::string_view character);

bool isUtf8(std::string_view text);

}  // namespace corvane::ctl
