// The command line of the window tool: what is asked for, checked as far as that is possible
// without a display.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cvnwinfo/geometry.h"

namespace corvane::wintool {

enum class Action {
    reportWindow,  ///< -g: print the rectangle of the window
    reportScreen,  ///< -a: print the size of the screen
    placeWindow,   ///< neither: move and resize the window as far as asked
    showHelp,
    showVersion,
};

struct Arguments {
    Action action = Action::placeWindow;
    std::string title;              ///< not empty for reportWindow and placeWindow
    std::optional<Point> position;  ///< only for placeWindow
    std::optional<Size> size;       ///< only for placeWindow
};

/// The text that --help prints.
extern const std::string_view helpText;

/// Reads the words after the program's name. Each of -n, -p and -s takes the next word whatever
/// it begins with, since titles and coordinates may begin with "-".
/// Coordinates are -32768 to 32767 and sizes 1 to 32767, the range that an X server knows; on macOS
/// it is the same.
/// Throws UsageError.
Arguments parseArguments(std::span<const char* const> words);

}  // namespace corvane::wintool
