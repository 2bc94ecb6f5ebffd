// What a request's target may name: its path taken apart into components, none of which leads
// anywhere else or is hidden.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::play {

/// The decoded components of an origin-form target ("/a/b%20c?query"), the query left out. An empty
/// last component stands for the "/" at the end. Nothing for a target that is not absolute, holds a
/// wrong escape, or has a component that is ".", "..", hidden (begins with a dot), empty before
/// the last, or holds "/", "\", a control character or a zero byte once decoded: no file of a movie
/// needs such a name, and each is a way out of a directory somewhere.
std::optional<std::vector<std::string>> pathComponents(std::string_view target);

}  // namespace corvane::play
