// Finds the window that a title means, among the windows that the window manager lists or, without
// such a window manager, among those of the whole screen.
#pragma once

#include <xcb/xproto.h>

#include <string_view>

#include "cvnwinfo/x11/display.h"

namespace corvane::wintool {

/// The topmost window with exactly this title, else the topmost whose title begins so.
/// Throws WindowError that names the title when there is none.
xcb_window_t findWindow(Display& display, std::string_view title);

}  // namespace corvane::wintool
