// The windows of the system that the tool is built for: a folder for each, x11 and macos, defines
// what is declared here. A title means the window that chooseTitle (title.h) picks.
#pragma once

#include <optional>
#include <string_view>

#include "cvnwinfo/geometry.h"

namespace corvane::wintool {

/// The line on standard error when the tool runs out of time, with its line break.
extern const std::string_view noAnswerMessage;

/// The present size of the screen. Throws WindowError.
Size screenSize();

/// The rectangle of the window that `title` means. Throws WindowError.
Rectangle windowRectangle(std::string_view title);

/// Looks for the window that `title` means, asks for the position and the size that are given, and
/// waits until the window has followed, for half a second at most. A window may stay elsewhere or
/// of another size; that is no error. Throws WindowError.
void placeWindow(std::string_view title, std::optional<Point> position, std::optional<Size> size);

}  // namespace corvane::wintool
