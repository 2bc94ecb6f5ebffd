// The variables that a movie starts with, as they stand in a page, and texts for a script.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::play {

using Flashvars = std::vector<std::pair<std::string, std::string>>;

/// "a=b&c=d", escaped as in the query of an address: "%HH", and "+" for a blank. A name without "="
/// has an empty value. Nothing for a wrong escape or an empty name.
std::optional<Flashvars> parseFlashvars(std::string_view text);

/// `text` as a string of JSON, with "<" escaped.
std::string jsonString(std::string_view text);

/// An object of JSON.
std::string jsonObject(const Flashvars& variables);

}  // namespace corvane::play
