// Moves and resizes a window through the window manager, so that its client area lies where it
// was asked to.
#pragma once

#include <xcb/xproto.h>

#include <optional>

#include "cvnwinfo/geometry.h"
#include "cvnwinfo/x11/display.h"

namespace corvane::wintool {

/// Asks for the position and the size that are given, and waits until the window has followed,
/// for half a second at most. A window manager may keep a window elsewhere or of another size;
/// that is no error.
/// Throws WindowError when the window is gone or the X server refuses the request.
void placeWindow(Display& display, xcb_window_t window, std::optional<Point> position,
                 std::optional<Size> size);

}  // namespace corvane::wintool
