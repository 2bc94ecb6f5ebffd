#include "cvnwinfo/macos/window_mover.h"

#include <poll.h>

#include <algorithm>
#include <chrono>

#include "cvnwinfo/move_limits.h"

namespace corvane::wintool {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds lookInterval(10);

void requirePlaceable(const Element& element, bool moves, bool resizes) {
    if (element.has("AXMinimized")) {
        throw WindowError("the window is minimised");
    }
    if (element.has("AXFullScreen")) {
        throw WindowError("the window is in full-screen mode");
    }
    if (moves && !element.canSet("AXPosition")) {
        throw WindowError("the window cannot be moved");
    }
    if (resizes && !element.canSet("AXSize")) {
        throw WindowError("the window cannot be resized");
    }
}

Rectangle frameOf(const Element& element) {
    const std::optional<Rectangle> frame = element.frame();
    if (!frame) {
        throw WindowGone();
    }
    return *frame;
}

void waitUntilPlaced(const Element& element, const Rectangle& before, const Rectangle& wanted) {
    auto deadline = Clock::now() + followLimit;
    Rectangle last = before;
    for (Rectangle now = frameOf(element); now != wanted; now = frameOf(element)) {
        if (now != last) {
            last = now;
            deadline = std::min(deadline, Clock::now() + quietLimit);
        }
        if (Clock::now() >= deadline) {
            break;
        }
        poll(nullptr, 0, static_cast<int>(lookInterval.count()));
    }
}

}  // namespace

void placeWindow(const Window& window, std::optional<Point> position, std::optional<Size> size) {
    if (!position && !size) {
        return;
    }
    const Element& element = window.element;
    requirePlaceable(element, position.has_value(), size.has_value());
    // An application keeps a size within the display that the window is on, and a position such
    // that the window, of the size that it has, can be reached. Hence the size first, and again at
    // the end.
    if (size) {
        element.setSize(*size);
    }
    if (position) {
        element.setPosition(*position);
    }
    if (position && size) {
        element.setSize(*size);
    }
    const Rectangle& before = window.frame;
    waitUntilPlaced(element, before,
                    {position.value_or(before.origin), size.value_or(before.size)});
}

}  // namespace corvane::wintool
