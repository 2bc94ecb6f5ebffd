// The escapes of addresses: "%" and two hexadecimal digits.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane::play {

/// `text` with its escapes replaced by the bytes that they stand for; nothing for a wrong escape.
std::optional<std::string> decodePercent(std::string_view text);

/// `text` as one component of a path: all but letters, digits and "-._~" escaped.
std::string escapeComponent(std::string_view text);

}  // namespace corvane::play
