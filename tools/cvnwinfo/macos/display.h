// The graphical session and its windows, as the window server lists them: without their titles,
// which it tells only to programs that may record the screen. Nothing here needs a permission.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "cvnwinfo/geometry.h"

namespace corvane::wintool {

/// An ordinary window: no menu, palette, Dock or part of the desktop.
struct ListedWindow {
    pid_t process = 0;
    std::string application;
    Rectangle frame;
};

enum class Shown {
    onScreen,  ///< the windows that can be seen now, the frontmost first
    anywhere,  ///< those that are minimised, hidden or elsewhere, too, in no order
};

/// Throws WindowError when this process belongs to no graphical session.
void requireSession();

/// Throws WindowError when the session is gone.
std::vector<ListedWindow> listWindows(Shown shown);

}  // namespace corvane::wintool
