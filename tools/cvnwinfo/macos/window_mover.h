// Moves and resizes a window through its application, so that its frame lies where it was asked to.
#pragma once

#include <optional>

#include "cvnwinfo/macos/window_finder.h"

namespace corvane::wintool {

/// Asks for the position and the size that are given, and waits until the window has followed, for
/// half a second at most. The application may keep it elsewhere or of another size; that is no
/// error. Throws WindowError when the window is minimised or fills the screen, cannot be moved or
/// resized, or is gone, and when its application refuses or does not answer.
void placeWindow(const Window& window, std::optional<Point> position, std::optional<Size> size);

}  // namespace corvane::wintool
