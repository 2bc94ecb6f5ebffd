// Splits a text into tokens at any character of a delimiter set. Unlike strExplode() it has no
// empty tokens: a run of delimiters counts as one.
#pragma once

#include <cstddef>
#include <string>

namespace corvane {

/// A provided interface; the program itself does not use it.
class StringTokenizer {
  public:
    StringTokenizer() = default;
    StringTokenizer(std::string text, std::string delimiters);

    /// Starts over with another text and another set.
    void set(std::string text, std::string delimiters);

    /// Starts over with the same text.
    void reset() { position_ = 0; }

    bool hasNextToken() const;

    /// The next token, or an empty string when only delimiters remain.
    std::string nextToken();

  private:
    std::string text_;
    std::string delimiters_;
    std::size_t position_ = 0;  // std::string::npos when the last token ran to the end
};

}  // namespace corvane
