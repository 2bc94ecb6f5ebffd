#include "support/x11_window.h"

#include <xcb/xproto.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace corvane::x11test {

namespace {

constexpr std::string_view stackingList = "_NET_CLIENT_LIST_STACKING";

template <typename T>
using Owned = std::unique_ptr<T, FreeXcb>;

int numberAfter(std::string_view text, std::string_view label) {
    const std::size_t start = text.find(label);
    if (start == std::string_view::npos) {
        throw std::runtime_error("xwininfo says nothing of " + std::string(label));
    }
    text.remove_prefix(start + label.size());
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const PixelRectangle& rectangle) {
    return out << rectangle.x << ',' << rectangle.y << ',' << rectangle.width << ','
               << rectangle.height;
}

void FreeXcb::operator()(void* memory) const { std::free(memory); }

X11Connection::X11Connection(const std::string& display)
    : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(get()) != 0) {
        throw std::runtime_error("cannot connect to the display " + display);
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(get())).data;
}

xcb_atom_t X11Connection::atom(const std::string& name) const {
    const auto cookie =
        xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr));
    if (!reply) {
        throw std::runtime_error("the X server knows no atom " + name);
    }
    return reply->atom;
}

std::vector<std::uint32_t> X11Connection::property(xcb_window_t window,
                                                   const std::string& name) const {
    constexpr std::uint32_t limit = 1024;
    const auto cookie =
        xcb_get_property(get(), 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, limit);
    const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(get(), cookie, nullptr));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* const items =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {items, items + reply->value_len};
}

bool X11Connection::waitUntil(const std::function<bool()>& condition) const {
    const auto look = [&] {
        while (Owned<xcb_generic_event_t>(xcb_poll_for_event(get()))) {
        }
        return condition();
    };
    return x11test::waitUntil(look, xcb_get_file_descriptor(get()));
}

TestWindow::TestWindow(const X11Session& session, const WindowOptions& options)
    : connection_(session.display()), managed_(session.hasManager()) {
    create(options);
    if (!options.mapped) {
        return;
    }
    xcb_map_window(connection_.get(), id_);
    xcb_flush(connection_.get());
    const bool shown = connection_.waitUntil([this] {
        const Owned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            connection_.get(), xcb_get_window_attributes(connection_.get(), id_), nullptr));
        const auto list =
            connection_.property(connection_.screen()->root, std::string(stackingList));
        const bool taken = std::find(list.begin(), list.end(), id_) != list.end();
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
               (taken || !managed_);
    });
    if (!shown) {
        throw std::runtime_error("the window was not shown in time");
    }
}

void TestWindow::create(const WindowOptions& options) {
    id_ = xcb_generate_id(connection_.get());
    const PixelRectangle& area = options.rectangle;
    const std::array<std::uint32_t, 1> events = {XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, id_, connection_.screen()->root,
                      static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
                      static_cast<std::uint16_t>(area.width),
                      static_cast<std::uint16_t>(area.height),
                      static_cast<std::uint16_t>(options.border), XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      connection_.screen()->root_visual, XCB_CW_EVENT_MASK, events.data());
    if (options.wmName) {
        setText("WM_NAME", options.wmNameType, *options.wmName);
    }
    if (options.netWmName) {
        setText("_NET_WM_NAME", "UTF8_STRING", *options.netWmName);
    }
    // A round trip: from now on other connections see the window.
    rectangle();
}

void TestWindow::setText(const std::string& property, const std::string& type,
                         const std::string& text) const {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, id_, connection_.atom(property),
                        connection_.atom(type), 8, static_cast<std::uint32_t>(text.size()),
                        text.data());
}

PixelRectangle TestWindow::rectangle() const {
    xcb_connection_t* const server = connection_.get();
    const xcb_window_t root = connection_.screen()->root;
    const Owned<xcb_get_geometry_reply_t> size(
        xcb_get_geometry_reply(server, xcb_get_geometry(server, id_), nullptr));
    const Owned<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
        server, xcb_translate_coordinates(server, id_, root, 0, 0), nullptr));
    if (!size || !origin) {
        throw std::runtime_error("the window is gone");
    }
    return {origin->dst_x, origin->dst_y, size->width, size->height};
}

bool TestWindow::waitForRectangle(const PixelRectangle& expected) const {
    return connection_.waitUntil([&] { return rectangle() == expected; });
}

void TestWindow::raise() const {
    const std::array<std::uint32_t, 1> above = {XCB_STACK_MODE_ABOVE};
    xcb_configure_window(connection_.get(), id_, XCB_CONFIG_WINDOW_STACK_MODE, above.data());
    xcb_flush(connection_.get());
    if (!connection_.waitUntil([this] { return isTopmost(); })) {
        throw std::runtime_error("the window did not come to the top in time");
    }
}

bool TestWindow::isTopmost() const {
    const xcb_window_t root = connection_.screen()->root;
    if (managed_) {
        const auto list = connection_.property(root, std::string(stackingList));
        return !list.empty() && list.back() == id_;
    }
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), root), nullptr));
    const int count = tree ? xcb_query_tree_children_length(tree.get()) : 0;
    return count > 0 && xcb_query_tree_children(tree.get())[count - 1] == id_;
}

PixelRectangle rectangleByXwininfo(const X11Session& session, xcb_window_t window) {
    const Outcome outcome =
        runProgram({"xwininfo", "-id", std::to_string(window)}, session.environment());
    if (outcome.status != 0) {
        throw std::runtime_error("xwininfo failed: " + outcome.errors);
    }
    return {numberAfter(outcome.output, "Absolute upper-left X:"),
            numberAfter(outcome.output, "Absolute upper-left Y:"),
            numberAfter(outcome.output, "  Width:"), numberAfter(outcome.output, "  Height:")};
}

}  // namespace corvane::x11test
