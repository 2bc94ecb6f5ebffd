// Reads lines from the person at a terminal. With libedit they can be edited and repeated, and are
// completed with the tabulator (line_editor_libedit.cpp); without it they are as the terminal gives
// them (line_editor_plain.cpp).
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::ctl {

/// What may be put in the place of a line's text from `begin` on.
struct Candidates {
    std::size_t begin = 0;
    /// As they are typed.
    std::vector<std::string> texts;
};

struct InputLine {
    enum class Kind { Line, Cancelled, End };

    Kind kind = Kind::End;
    std::string text;
};

class LineEditor {
  public:
    /// Called with the text in front of the cursor.
    using Completer = std::function<Candidates(std::string_view)>;

    LineEditor(std::string prompt, Completer completer);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    LineEditor(LineEditor&&) = delete;
    LineEditor& operator=(LineEditor&&) = delete;

    /// Ctrl-C cancels a line, Ctrl-D on an empty one is the end.
    InputLine read();

    /// Makes a line one of those that can be repeated.
    void remember(const std::string& line);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The text that all of them begin with; there must be one.
std::string commonBegin(const std::vector<std::string>& texts);

}  // namespace corvane::ctl
