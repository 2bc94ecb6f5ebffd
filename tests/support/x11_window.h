// A real window in a session of x11_session.h, and what the session's tools say about it.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "support/x11_session.h"

namespace corvane::x11test {

/// The client area of a window in root coordinates, in pixels.
struct PixelRectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelRectangle&) const = default;
};

std::ostream& operator<<(std::ostream& out, const PixelRectangle& rectangle);

/// Frees what libxcb allocated with malloc.
struct FreeXcb {
    void operator()(void* memory) const;
};

/// A connection to the session's X server.
class X11Connection {
  public:
    explicit X11Connection(const std::string& display);

    xcb_connection_t* get() const { return connection_.get(); }
    xcb_screen_t* screen() const { return screen_; }

    /// The atom's number; created when it does not exist.
    xcb_atom_t atom(const std::string& name) const;

    /// The 32-bit items of a property; empty when there is none.
    std::vector<std::uint32_t> property(xcb_window_t window, const std::string& name) const;

    /// As the function of the same name, looking again when the X server has sent something.
    bool waitUntil(const std::function<bool()>& condition) const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_screen_t* screen_ = nullptr;
};

struct WindowOptions {
    std::optional<std::string> wmName = std::nullopt;     ///< WM_NAME
    std::string wmNameType = "STRING";                    ///< its encoding, ISO 8859-1
    std::optional<std::string> netWmName = std::nullopt;  ///< _NET_WM_NAME, in UTF-8
    /// What is asked for; a window manager takes only the size from it.
    PixelRectangle rectangle = {60, 70, 320, 240};
    std::uint32_t border = 0;
    bool mapped = true;
};

/// A window that lives as long as the object.
class TestWindow {
  public:
    /// Returns when the window is on the screen and, in a session with a window manager, when that
    /// has taken it over.
    TestWindow(const X11Session& session, const WindowOptions& options);

    xcb_window_t id() const { return id_; }

    /// Where the X server has the client area now.
    PixelRectangle rectangle() const;

    /// Waits until the client area lies so; false when it does not in time.
    bool waitForRectangle(const PixelRectangle& expected) const;

    /// Puts the window on top and waits until it is there.
    void raise() const;

  private:
    void create(const WindowOptions& options);
    void setText(const std::string& property, const std::string& type,
                 const std::string& text) const;
    bool isTopmost() const;

    X11Connection connection_;
    bool managed_;
    xcb_window_t id_ = XCB_NONE;
};

/// What the program xwininfo reports for a window.
PixelRectangle rectangleByXwininfo(const X11Session& session, xcb_window_t window);

}  // namespace corvane::x11test
