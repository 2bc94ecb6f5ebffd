#include "cvnwinfo/x11/placement.h"

#include <xcb/xproto.h>

#include <array>
#include <cstddef>

namespace corvane::wintool {

namespace {

enum class Anchor { start, center, end, client };

struct Anchors {
    Anchor horizontal;
    Anchor vertical;
};

Anchors anchorsOf(std::uint32_t gravity) {
    if (gravity == XCB_GRAVITY_STATIC) {
        return {Anchor::client, Anchor::client};
    }
    if (gravity < XCB_GRAVITY_NORTH_WEST || gravity > XCB_GRAVITY_SOUTH_EAST) {
        return {Anchor::start, Anchor::start};
    }
    // The values count the nine places of a square, row by row.
    constexpr std::array places{Anchor::start, Anchor::center, Anchor::end};
    const std::size_t place = gravity - XCB_GRAVITY_NORTH_WEST;
    return {places[place % places.size()], places[place / places.size()]};
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
    const Anchors anchors = anchorsOf(gravity);
    return {requestedCoordinate(wanted.x, extents.left, extents.right, border, anchors.horizontal),
            requestedCoordinate(wanted.y, extents.top, extents.bottom, border, anchors.vertical)};
}

}  // namespace corvane::wintool
