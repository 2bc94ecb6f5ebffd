// Window titles: which of several windows a title means, and titles as text for messages.
// Titles are byte strings in UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace corvane::wintool {

/// The index of the window that `wanted` means among `titles`, which are ordered from the topmost
/// window down: the first whose title is `wanted`, else the first whose title begins so. Windows
/// without a title have an empty one and are never chosen by an empty `wanted`.
std::optional<std::size_t> chooseTitle(std::span<const std::string> titles,
                                       std::string_view wanted);

/// `text` in ISO 8859-1 as UTF-8.
std::string latin1ToUtf8(std::string_view text);

/// `text` in single quotes, fit for one line of a message: control characters as "?", and at most
/// 64 bytes of text, a longer one ending in "...".
std::string inQuotes(std::string_view text);

}  // namespace corvane::wintool
