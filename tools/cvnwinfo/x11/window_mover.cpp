#include "cvnwinfo/x11/window_mover.h"

#include <poll.h>
#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/move_limits.h"
#include "cvnwinfo/x11/placement.h"

namespace corvane::wintool {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

WindowGeometry geometryOf(const Display& display, xcb_window_t window) {
    const auto geometry = display.geometry(window);
    if (!geometry) {
        throw WindowError("the window has disappeared");
    }
    return *geometry;
}

// The child of the root that holds the window: its frame, or the window itself.
xcb_window_t topLevelOf(const Display& display, xcb_window_t window) {
    for (auto parent = display.parent(window); parent && *parent != display.root();
         parent = display.parent(window)) {
        window = *parent;
    }
    return window;
}

void check(const Display& display, xcb_void_cookie_t cookie) {
    const Reply<xcb_generic_error_t> error(xcb_request_check(display.connection(), cookie));
    if (error) {
        throw WindowError("the X server refused the request (error " +
                          std::to_string(error->error_code) + ")");
    }
    display.requireConnection();
}

void watch(const Display& display, xcb_window_t window) {
    const std::array<std::uint32_t, 1> events = {XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_change_window_attributes(display.connection(), window, XCB_CW_EVENT_MASK, events.data());
}

// Static gravity: the position is that of the client area, whatever the frame.
void askManager(Display& display, xcb_window_t window, std::optional<Point> position,
                std::optional<Size> size) {
    std::uint32_t flags = 0;
    if (position) {
        flags |= XCB_EWMH_MOVERESIZE_WINDOW_X;
        flags |= XCB_EWMH_MOVERESIZE_WINDOW_Y;
    }
    if (size) {
        flags |= XCB_EWMH_MOVERESIZE_WINDOW_WIDTH;
        flags |= XCB_EWMH_MOVERESIZE_WINDOW_HEIGHT;
    }
    const Point origin = position.value_or(Point());
    const Size extent = size.value_or(Size());
    // Applications that a user controls from outside are "pagers" to a window manager.
    xcb_ewmh_request_moveresize_window(
        &display.ewmh(), display.screenNumber(), window, XCB_GRAVITY_STATIC,
        XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
        static_cast<xcb_ewmh_moveresize_window_opt_flags_t>(flags),
        static_cast<std::uint32_t>(origin.x), static_cast<std::uint32_t>(origin.y),
        static_cast<std::uint32_t>(extent.width), static_cast<std::uint32_t>(extent.height));
}

std::uint32_t gravityOf(const Display& display, xcb_window_t window) {
    xcb_size_hints_t hints = {};
    const auto cookie = xcb_icccm_get_wm_normal_hints(display.connection(), window);
    if (xcb_icccm_get_wm_normal_hints_reply(display.connection(), cookie, &hints, nullptr) == 0 ||
        (hints.flags & XCB_ICCCM_SIZE_HINT_P_WIN_GRAVITY) == 0) {
        return XCB_GRAVITY_NORTH_WEST;
    }
    return hints.win_gravity;
}

// The frame with its own border, or the window with its border when it has no frame.
Rectangle outerRectangle(const WindowGeometry& geometry) {
    const int border = geometry.border;
    return {{geometry.area.origin.x - border, geometry.area.origin.y - border},
            {geometry.area.size.width + 2 * border, geometry.area.size.height + 2 * border}};
}

// Goes to the window manager as a ConfigureRequest when there is one, else the X server does it.
void configure(const Display& display, xcb_window_t window, xcb_window_t top,
               std::optional<Point> position, std::optional<Size> size) {
    xcb_configure_window_value_list_t values = {};
    std::uint16_t mask = 0;
    if (position) {
        const WindowGeometry client = geometryOf(display, window);
        const Rectangle frame = outerRectangle(geometryOf(display, top));
        const Point origin = requestedOrigin(*position, extentsAround(frame, client.area),
                                             client.border, gravityOf(display, window));
        values.x = origin.x;
        values.y = origin.y;
        mask |= XCB_CONFIG_WINDOW_X;
        mask |= XCB_CONFIG_WINDOW_Y;
    }
    if (size) {
        values.width = static_cast<std::uint32_t>(size->width);
        values.height = static_cast<std::uint32_t>(size->height);
        mask |= XCB_CONFIG_WINDOW_WIDTH;
        mask |= XCB_CONFIG_WINDOW_HEIGHT;
    }
    check(display, xcb_configure_window_aux_checked(display.connection(), window, mask, &values));
}

// Takes all events that have come; true when one of them tells of a move or a new size.
bool takeEvents(const Display& display) {
    bool configured = false;
    for (Reply<xcb_generic_event_t> event(xcb_poll_for_event(display.connection())); event;
         event.reset(xcb_poll_for_event(display.connection()))) {
        constexpr unsigned sentFlag = 0x80;
        configured |= (event->response_type & ~sentFlag) == XCB_CONFIGURE_NOTIFY;
    }
    return configured;
}

void waitUntilPlaced(const Display& display, xcb_window_t window, const Rectangle& wanted) {
    auto deadline = Clock::now() + followLimit;
    // Each look at the window is a round trip, so the first one ends with the request handed over.
    while (geometryOf(display, window).area != wanted) {
        const bool configured = takeEvents(display);
        if (configured) {
            deadline = std::min(deadline, Clock::now() + quietLimit);
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        if (left <= milliseconds::zero()) {
            break;
        }
        if (configured) {
            continue;
        }
        pollfd ready = {xcb_get_file_descriptor(display.connection()), POLLIN, 0};
        poll(&ready, 1, static_cast<int>(left.count()));
    }
}

}  // namespace

void placeWindow(Display& display, xcb_window_t window, std::optional<Point> position,
                 std::optional<Size> size) {
    const Rectangle before = geometryOf(display, window).area;
    if (!position && !size) {
        return;
    }
    const xcb_window_t top = topLevelOf(display, window);
    watch(display, window);
    watch(display, top);
    if (display.managerSupports(display.ewmh()._NET_MOVERESIZE_WINDOW)) {
        askManager(display, window, position, size);
    } else {
        configure(display, window, top, position, size);
    }
    waitUntilPlaced(display, window,
                    {position.value_or(before.origin), size.value_or(before.size)});
}

}  // namespace corvane::wintool
