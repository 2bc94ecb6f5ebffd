// The two ways in which the window tool fails; each stands for one exit status. The message is
// what the user reads on standard error after "cvnwinfo: ".
#pragma once

#include <stdexcept>

namespace corvane::wintool {

/// The command line is wrong: exit status 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// No such window, no display, no permission, or the window system refused: exit status 1.
class WindowError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace corvane::wintool
