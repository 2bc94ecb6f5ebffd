#include "cvnwinfo/window_system.h"

#include "cvnwinfo/errors.h"
#include "cvnwinfo/x11/display.h"
#include "cvnwinfo/x11/window_finder.h"
#include "cvnwinfo/x11/window_mover.h"

namespace corvane::wintool {

const std::string_view noAnswerMessage = "cvnwinfo: the X server does not answer\n";

Size screenSize() { return Display().screenSize(); }

Rectangle windowRectangle(std::string_view title) {
    Display display;
    const auto geometry = display.geometry(findWindow(display, title));
    if (!geometry) {
        throw WindowError("the window has disappeared");
    }
    return geometry->area;
}

void placeWindow(std::string_view title, std::optional<Point> position, std::optional<Size> size) {
    Display display;
    placeWindow(display, findWindow(display, title), position, size);
}

}  // namespace corvane::wintool
