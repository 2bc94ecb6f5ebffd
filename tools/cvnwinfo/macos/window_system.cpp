#include "cvnwinfo/window_system.h"

#include "cvnwinfo/macos/accessibility.h"
#include "cvnwinfo/macos/display.h"
#include "cvnwinfo/macos/window_finder.h"
#include "cvnwinfo/macos/window_mover.h"

namespace corvane::wintool {

namespace {

void prepare() {
    requireSession();
    requirePermission();
    limitAnswerTime();
}

}  // namespace

const std::string_view noAnswerMessage = "cvnwinfo: the applications on the screen do not answer\n";

Size screenSize() {
    requireSession();
    const Size size = toRectangle(CGDisplayBounds(CGMainDisplayID())).size;
    if (size.width <= 0 || size.height <= 0) {
        throw WindowError("macOS does not tell the size of the main display");
    }
    return size;
}

Rectangle windowRectangle(std::string_view title) {
    prepare();
    return findWindow(title).frame;
}

void placeWindow(std::string_view title, std::optional<Point> position, std::optional<Size> size) {
    prepare();
    placeWindow(findWindow(title), position, size);
}

}  // namespace corvane::wintool
