#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <utility>

#include "corvanectl/line_editor.h"

namespace corvane::ctl {

struct LineEditor::State {
    std::string prompt;
};

namespace {

// While it lives, Ctrl-C ends a read instead of the program.
class InterruptedReads {
  public:
    InterruptedReads() {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGINT, &action, &before_);
    }
    ~InterruptedReads() { ::sigaction(SIGINT, &before_, nullptr); }
    InterruptedReads(const InterruptedReads&) = delete;
    InterruptedReads& operator=(const InterruptedReads&) = delete;
    InterruptedReads(InterruptedReads&&) = delete;
    InterruptedReads& operator=(InterruptedReads&&) = delete;

  private:
    struct sigaction before_ {};
};

}  // namespace

LineEditor::LineEditor(std::string prompt, Completer /*completer*/)
    : state_(std::make_unique<State>(State{std::move(prompt)})) {}

LineEditor::~LineEditor() = default;

InputLine LineEditor::read() {
    const InterruptedReads interrupted;
    std::cout << state_->prompt << std::flush;
    InputLine line{InputLine::Kind::Line, ""};
    while (true) {
        char c = 0;
        const ssize_t got = ::read(STDIN_FILENO, &c, 1);
        if (got == -1 && errno == EINTR) {
            std::cout << '\n';
            return {InputLine::Kind::Cancelled, ""};
        }
        if (got <= 0) {
            return {line.text.empty() ? InputLine::Kind::End : InputLine::Kind::Line, line.text};
        }
        if (c == '\n') {
            return line;
        }
        line.text += c;
    }
}

void LineEditor::remember(const std::string& /*line*/) {}

}  // namespace corvane::ctl
