// Takes a line into words as a shell does, without its variables and patterns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::ctl {

/// How the last word of a line ends.
enum class Quote { None, Single, Double };

struct ShellWords {
    std::vector<std::string> words;
    /// The quotes that were open at the end; nothing can be done with such a line but go on.
    Quote open = Quote::None;
    /// Whether a blank stands at the end, so that a next word begins there.
    bool atNextWord = true;
    /// Where the last word begins in the line.
    std::size_t lastBegin = 0;
};

/// Words are separated by blanks; '...' keeps all, "..." all but \" and \\, and a backslash what
/// follows it. A backslash at the end stands for itself.
ShellWords splitWords(std::string_view line);

/// The word as it must be typed to be one, with a backslash before what has a meaning.
std::string quoted(std::string_view word);

}  // namespace corvane::ctl
