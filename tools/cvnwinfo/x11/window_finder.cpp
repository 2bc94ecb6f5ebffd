#include "cvnwinfo/x11/window_finder.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/title.h"

namespace corvane::wintool {

namespace {

// How much of one top-level window's tree is searched for the client inside a frame.
constexpr std::size_t frameSearchLimit = 64;

using Windows = std::vector<xcb_window_t>;

std::optional<Windows> listedWindows(Display& display, xcb_atom_t list) {
    if (!display.managerSupports(list)) {
        return std::nullopt;
    }
    xcb_ewmh_connection_t& ewmh = display.ewmh();
    const auto cookie = list == ewmh._NET_CLIENT_LIST_STACKING
                            ? xcb_ewmh_get_client_list_stacking(&ewmh, display.screenNumber())
                            : xcb_ewmh_get_client_list(&ewmh, display.screenNumber());
    xcb_ewmh_get_windows_reply_t reply = {};
    if (xcb_ewmh_get_windows_reply(&ewmh, cookie, &reply, nullptr) == 0) {
        return std::nullopt;
    }
    Windows windows(reply.windows, reply.windows + reply.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&reply);
    return windows;
}

// The client inside the frame `top`, or `top` itself when no window manager has taken over
// anything in it.
xcb_window_t clientInside(const Display& display, xcb_window_t top) {
    Windows queue = {top};
    for (std::size_t next = 0; next < queue.size() && next < frameSearchLimit; ++next) {
        if (display.isManaged(queue[next])) {
            return queue[next];
        }
        const Windows below = display.children(queue[next]);
        queue.insert(queue.end(), below.begin(), below.end());
    }
    return top;
}

// Programs keep unmapped helper windows that carry the program's title; a minimised window is
// unmapped too, but managed.
Windows windowsOfTree(const Display& display) {
    Windows windows;
    for (const xcb_window_t top : display.children(display.root())) {
        const xcb_window_t client = clientInside(display, top);
        if (display.isMapped(client) || display.isManaged(client)) {
            windows.push_back(client);
        }
    }
    return windows;
}

// All sources list the bottom window first; _NET_CLIENT_LIST the oldest, the nearest it can tell.
Windows windowsTopmostFirst(Display& display) {
    std::optional<Windows> windows =
        listedWindows(display, display.ewmh()._NET_CLIENT_LIST_STACKING);
    if (!windows) {
        windows = listedWindows(display, display.ewmh()._NET_CLIENT_LIST);
    }
    if (!windows) {
        windows = windowsOfTree(display);
    }
    std::reverse(windows->begin(), windows->end());
    return *windows;
}

}  // namespace

xcb_window_t findWindow(Display& display, std::string_view title) {
    const Windows windows = windowsTopmostFirst(display);
    std::vector<std::string> titles;
    titles.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        titles.push_back(display.title(window));
    }
    display.requireConnection();
    const std::optional<std::size_t> index = chooseTitle(titles, title);
    if (!index) {
        throw WindowError("no window titled " + inQuotes(title));
    }
    return windows[*index];
}

}  // namespace corvane::wintool
