// Finds the window that a title means among those of the session: the window server knows their
// order, the applications know their titles, and the frame tells which is which.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

#include "cvnwinfo/macos/accessibility.h"

namespace corvane::wintool {

struct Window {
    Element element;
    pid_t process = 0;
    std::string title;
    Rectangle frame;  ///< with the title bar
};

/// The frontmost window with exactly this title, else the frontmost whose title begins so; windows
/// that cannot be seen come behind those that can.
/// Throws WindowError that names the title when there is none, and the first application that did
/// not answer, whose window it may be.
Window findWindow(std::string_view title);

}  // namespace corvane::wintool
