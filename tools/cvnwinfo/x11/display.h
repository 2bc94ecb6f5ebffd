// One connection to an X server, with the few requests that the tool needs and the EWMH atoms.
// A window of another program may disappear between any two requests: what asks about a window
// answers "nothing" then.
#pragma once

#include <xcb/xcb_ewmh.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cvnwinfo/geometry.h"

namespace corvane::wintool {

/// Frees what libxcb allocated with malloc.
struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

/// An owned reply, error or event.
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

/// The client area of a window in root coordinates, and its border.
struct WindowGeometry {
    Rectangle area;
    int border = 0;
};

class Display {
  public:
    /// Connects to the display that the environment variable DISPLAY names.
    /// Throws WindowError with the reason.
    Display();
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    xcb_connection_t* connection() const { return connection_.get(); }
    xcb_window_t root() const { return root_; }
    int screenNumber() const { return screenNumber_; }
    /// The atoms; their functions take a pointer to non-const.
    xcb_ewmh_connection_t& ewmh() { return ewmh_; }

    /// The present size of the screen, in pixels. Throws WindowError.
    Size screenSize() const;

    /// Nothing when the window is gone. Throws WindowError when the connection broke.
    std::optional<WindowGeometry> geometry(xcb_window_t window) const;

    /// The children of `window` from the bottom of the stack up; empty when it is gone.
    std::vector<xcb_window_t> children(xcb_window_t window) const;

    /// The parent of `window`, or nothing when it is gone or the root.
    std::optional<xcb_window_t> parent(xcb_window_t window) const;

    /// The title: _NET_WM_NAME, else WM_NAME turned into UTF-8, else empty.
    std::string title(xcb_window_t window);

    /// Whether a window manager has taken the window over (it then carries WM_STATE).
    bool isManaged(xcb_window_t window) const;

    bool isMapped(xcb_window_t window) const;

    /// Whether a running window manager announces `feature`, one of the EWMH atoms.
    bool managerSupports(xcb_atom_t feature);

    /// Throws WindowError when the connection broke.
    void requireConnection() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    bool managerRuns();
    std::optional<xcb_window_t> managerCheckWindow(xcb_window_t window);
    std::string netWmName(xcb_window_t window);
    std::string wmName(xcb_window_t window);

    int screenNumber_ = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_window_t root_ = XCB_NONE;
    xcb_atom_t wmState_ = XCB_NONE;
    xcb_atom_t utf8String_ = XCB_NONE;
    xcb_ewmh_connection_t ewmh_ = {};
};

}  // namespace corvane::wintool
