#include <signal.h>
#include <sys/select.h>
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

// While it lives, Ctrl-C ends a wait instead of the program, at whatever moment it comes.
class InterruptedWaits {
  public:
    InterruptedWaits() {
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        ::sigprocmask(SIG_BLOCK, &interrupt, &outside_);
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGINT, &action, &before_);
    }
    ~InterruptedWaits() {
        ::sigprocmask(SIG_SETMASK, &outside_, nullptr);
        ::sigaction(SIGINT, &before_, nullptr);
    }
    InterruptedWaits(const InterruptedWaits&) = delete;
    InterruptedWaits& operator=(const InterruptedWaits&) = delete;
    InterruptedWaits(InterruptedWaits&&) = delete;
    InterruptedWaits& operator=(InterruptedWaits&&) = delete;

    // False after Ctrl-C, else standard input has something, or its end.
    bool forInput() const {
        fd_set input;
        FD_ZERO(&input);
        FD_SET(STDIN_FILENO, &input);
        return ::pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, nullptr, &outside_) != -1 ||
               errno != EINTR;
    }

  private:
    sigset_t outside_{};
    struct sigaction before_ {};
};

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the other editor keeps it
LineEditor::LineEditor(std::string prompt, Completer /*completer*/)
    : state_(std::make_unique<State>(State{std::move(prompt)})) {}

LineEditor::~LineEditor() = default;

InputLine LineEditor::read() {
    const InterruptedWaits wait;
    std::cout << state_->prompt << std::flush;
    InputLine line{InputLine::Kind::Line, ""};
    while (true) {
        char c = 0;
        if (!wait.forInput()) {
            std::cout << '\n';
            return {InputLine::Kind::Cancelled, ""};
        }
        if (::read(STDIN_FILENO, &c, 1) <= 0) {
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
