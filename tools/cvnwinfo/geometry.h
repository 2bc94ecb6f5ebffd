// Plain records for places on the screen; x and y may be negative. On X11 in pixels from the upper
// left corner of the root window, on macOS in points from that of the main display.
#pragma once

namespace corvane::wintool {

struct Point {
    int x = 0;
    int y = 0;

    bool operator==(const Point&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size&) const = default;
};

struct Rectangle {
    Point origin;
    Size size;

    bool operator==(const Rectangle&) const = default;
};

}  // namespace corvane::wintool
