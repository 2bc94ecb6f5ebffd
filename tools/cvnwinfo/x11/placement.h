// Arithmetic of a window within its frame: which coordinates to ask a window manager for so that
// the client area, not the frame, lands where it is wanted.
#pragma once

#include <cstdint>

#include "cvnwinfo/geometry.h"

namespace corvane::wintool {

/// How far a frame reaches beyond the client area on each side, in pixels, borders included.
struct FrameExtents {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

/// The extents of `frame`, its borders included, around the client area `client`.
FrameExtents extentsAround(const Rectangle& frame, const Rectangle& client);

/// The position to put into a ConfigureWindow request. A window manager takes that position for
/// the outer corner of a window without frame and then keeps the reference point of the window's
/// gravity (an X gravity of its WM_NORMAL_HINTS) in place while it adds the frame.
/// `wanted` is where the client area shall be, `border` the window's own border width. Without
/// frame, every extent is the border width and the gravity does not matter.
Point requestedOrigin(Point wanted, const FrameExtents& extents, int border, std::uint32_t gravity);

}  // namespace corvane::wintool
