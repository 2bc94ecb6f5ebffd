#include "cvnwinfo/placement.h"

#include <xcb/xproto.h>

namespace corvane::wintool {

namespace {

enum class Anchor { start, center, end, client };

Anchor horizontalAnchor(std::uint32_t gravity) {
    switch (gravity) {
        case XCB_GRAVITY_NORTH:
        case XCB_GRAVITY_CENTER:
        case XCB_GRAVITY_SOUTH:
            return Anchor::center;
        case XCB_GRAVITY_NORTH_EAST:
        case XCB_GRAVITY_EAST:
        case XCB_GRAVITY_SOUTH_EAST:
            return Anchor::end;
        case XCB_GRAVITY_STATIC:
            return Anchor::client;
        default:
            return Anchor::start;
    }
}

Anchor verticalAnchor(std::uint32_t gravity) {
    switch (gravity) {
        case XCB_GRAVITY_WEST:
        case XCB_GRAVITY_CENTER:
        case XCB_GRAVITY_EAST:
            return Anchor::center;
        case XCB_GRAVITY_SOUTH_WEST:
        case XCB_GRAVITY_SOUTH:
        case XCB_GRAVITY_SOUTH_EAST:
            return Anchor::end;
        case XCB_GRAVITY_STATIC:
            return Anchor::client;
        default:
            return Anchor::start;
    }
}

// `before` and `after` are the frame's extents on the two sides of one axis.
int requestedCoordinate(int wanted, int before, int after, int border, Anchor anchor) {
    switch (anchor) {
        case Anchor::start:
            return wanted - before;
        case Anchor::center:
            return wanted - border - (before - after) / 2;
        case Anchor::end:
            return wanted - 2 * border + after;
        case Anchor::client:
            break;
    }
    return wanted - border;
}

}  // namespace

FrameExtents extentsAround(const Rectangle& frame, const Rectangle& client) {
    const int left = client.origin.x - frame.origin.x;
    const int top = client.origin.y - frame.origin.y;
    return {.left = left,
            .right = frame.size.width - client.size.width - left,
            .top = top,
            .bottom = frame.size.height - client.size.height - top};
}

Point requestedOrigin(Point wanted, const FrameExtents& extents, int border,
                      std::uint32_t gravity) {
    return {requestedCoordinate(wanted.x, extents.left, extents.right, border,
                                horizontalAnchor(gravity)),
            requestedCoordinate(wanted.y, extents.top, extents.bottom, border,
                                verticalAnchor(gravity))};
}

}  // namespace corvane::wintool
