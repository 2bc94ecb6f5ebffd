// Plain records for places on the screen, in pixels; x and y count from the upper left corner of
// the root window and may be negative.
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
