#include "cvnwinfo/x11/display.h"

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/title.h"

namespace corvane::wintool {

namespace {

std::string connectionFailure(int code) {
    const char* const value = std::getenv("DISPLAY");
    if (value == nullptr || *value == '\0') {
        return "no X display: the environment variable DISPLAY is not set";
    }
    const std::string name = inQuotes(value);
    switch (code) {
        case XCB_CONN_CLOSED_PARSE_ERR:
            return "the environment variable DISPLAY names no X display: " + name;
        case XCB_CONN_CLOSED_INVALID_SCREEN:
            return "the X display " + name + " has no such screen";
        default:
            return "cannot connect to the X display " + name +
                   ": no X server there, or it refuses this user";
    }
}

xcb_window_t rootOfScreen(const xcb_setup_t* setup, int number) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (; number > 0 && screens.rem > 1; --number) {
        xcb_screen_next(&screens);
    }
    return screens.data->root;
}

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_NONE);
}

}  // namespace

Display::Display() : connection_(xcb_connect(nullptr, &screenNumber_)) {
    if (const int code = xcb_connection_has_error(connection()); code != 0) {
        throw WindowError(connectionFailure(code));
    }
    root_ = rootOfScreen(xcb_get_setup(connection()), screenNumber_);
    xcb_intern_atom_cookie_t* const cookies = xcb_ewmh_init_atoms(connection(), &ewmh_);
    if (xcb_ewmh_init_atoms_replies(&ewmh_, cookies, nullptr) == 0) {
        throw WindowError("the connection to the X server broke");
    }
    wmState_ = atom(connection(), "WM_STATE");
    utf8String_ = atom(connection(), "UTF8_STRING");
}

Display::~Display() { xcb_ewmh_connection_wipe(&ewmh_); }

void Display::requireConnection() const {
    if (xcb_connection_has_error(connection()) != 0) {
        throw WindowError("the connection to the X server broke");
    }
}

Size Display::screenSize() const {
    const auto geometryOfRoot = geometry(root_);
    if (!geometryOfRoot) {
        throw WindowError("the X server does not tell the size of the screen");
    }
    return geometryOfRoot->area.size;
}

std::optional<WindowGeometry> Display::geometry(xcb_window_t window) const {
    const auto geometryCookie = xcb_get_geometry(connection(), window);
    const auto originCookie = xcb_translate_coordinates(connection(), window, root_, 0, 0);
    const Reply<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(connection(), geometryCookie, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> origin(
        xcb_translate_coordinates_reply(connection(), originCookie, nullptr));
    if (!size || !origin) {
        requireConnection();
        return std::nullopt;
    }
    return WindowGeometry{
        .area = {{origin->dst_x, origin->dst_y}, {size->width, size->height}},
        .border = size->border_width,
    };
}

std::vector<xcb_window_t> Display::children(xcb_window_t window) const {
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* const first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

std::optional<xcb_window_t> Display::parent(xcb_window_t window) const {
    const Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
    if (!tree || tree->parent == XCB_NONE) {
        return std::nullopt;
    }
    return tree->parent;
}

std::string Display::title(xcb_window_t window) {
    std::string name = netWmName(window);
    return name.empty() ? wmName(window) : name;
}

std::string Display::netWmName(xcb_window_t window) {
    xcb_ewmh_get_utf8_strings_reply_t text = {};
    const auto cookie = xcb_ewmh_get_wm_name(&ewmh_, window);
    if (xcb_ewmh_get_wm_name_reply(&ewmh_, cookie, &text, nullptr) == 0) {
        return {};
    }
    std::string name(text.strings, text.strings_len);
    xcb_ewmh_get_utf8_strings_reply_wipe(&text);
    return name;
}

std::string Display::wmName(xcb_window_t window) {
    xcb_icccm_get_text_property_reply_t text = {};
    const auto cookie = xcb_icccm_get_wm_name(connection(), window);
    if (xcb_icccm_get_wm_name_reply(connection(), cookie, &text, nullptr) == 0) {
        return {};
    }
    const std::string_view bytes(text.name, text.format == 8 ? text.name_len : 0);
    // STRING is ISO 8859-1, and so is COMPOUND_TEXT until it switches its character set.
    std::string name = text.encoding == utf8String_ ? std::string(bytes) : latin1ToUtf8(bytes);
    xcb_icccm_get_text_property_reply_wipe(&text);
    return name;
}

bool Display::isManaged(xcb_window_t window) const {
    const auto cookie = xcb_get_property(connection(), 0, window, wmState_, wmState_, 0, 0);
    const Reply<xcb_get_property_reply_t> state(
        xcb_get_property_reply(connection(), cookie, nullptr));
    return state && state->type == wmState_;
}

bool Display::isMapped(xcb_window_t window) const {
    const auto cookie = xcb_get_window_attributes(connection(), window);
    const Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection(), cookie, nullptr));
    return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
}

std::optional<xcb_window_t> Display::managerCheckWindow(xcb_window_t window) {
    xcb_window_t check = XCB_NONE;
    const auto cookie = xcb_ewmh_get_supporting_wm_check(&ewmh_, window);
    if (xcb_ewmh_get_supporting_wm_check_reply(&ewmh_, cookie, &check, nullptr) == 0) {
        return std::nullopt;
    }
    return check;
}

// The root keeps its properties when a window manager dies, the check window does not: a manager
// runs when the check window exists and names itself.
bool Display::managerRuns() {
    const std::optional<xcb_window_t> check = managerCheckWindow(root_);
    return check && managerCheckWindow(*check) == check;
}

bool Display::managerSupports(xcb_atom_t feature) {
    if (!managerRuns()) {
        return false;
    }
    xcb_ewmh_get_atoms_reply_t features = {};
    const auto cookie = xcb_ewmh_get_supported(&ewmh_, screenNumber_);
    if (xcb_ewmh_get_supported_reply(&ewmh_, cookie, &features, nullptr) == 0) {
        return false;
    }
    const std::span<const xcb_atom_t> atoms(features.atoms, features.atoms_len);
    const bool supported = std::find(atoms.begin(), atoms.end(), feature) != atoms.end();
    xcb_ewmh_get_atoms_reply_wipe(&features);
    return supported;
}

}  // namespace corvane::wintool
