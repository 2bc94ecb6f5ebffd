#include "cvnwinfo/macos/display.h"

#include <cstdint>
#include <optional>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/macos/core_foundation.h"

namespace corvane::wintool {

namespace {

// The layer of ordinary windows; palettes, menus and the Dock lie in higher ones.
constexpr int normalLayer = 0;

WindowError noSession() {
    return WindowError(
        "no session on the screen: nobody is logged in there, or this program runs outside of it");
}

std::optional<int> numberOf(CFDictionaryRef window, CFStringRef key) {
    const auto* const number = static_cast<CFNumberRef>(CFDictionaryGetValue(window, key));
    std::int32_t value = 0;
    if (number == nullptr || CFNumberGetValue(number, kCFNumberSInt32Type, &value) == 0) {
        return std::nullopt;
    }
    return value;
}

std::string textOf(CFDictionaryRef window, CFStringRef key) {
    const auto* const text = static_cast<CFStringRef>(CFDictionaryGetValue(window, key));
    return text == nullptr ? std::string() : toUtf8(text);
}

std::optional<Rectangle> boundsOf(CFDictionaryRef window) {
    const auto* const bounds =
        static_cast<CFDictionaryRef>(CFDictionaryGetValue(window, kCGWindowBounds));
    CGRect rectangle = {};
    if (bounds == nullptr || !CGRectMakeWithDictionaryRepresentation(bounds, &rectangle)) {
        return std::nullopt;
    }
    return toRectangle(rectangle);
}

}  // namespace

void requireSession() {
    const Owned<CFDictionaryRef> session(CGSessionCopyCurrentDictionary());
    if (!session) {
        throw noSession();
    }
}

std::vector<ListedWindow> listWindows(Shown shown) {
    CGWindowListOption option = kCGWindowListExcludeDesktopElements;
    if (shown == Shown::onScreen) {
        option |= kCGWindowListOptionOnScreenOnly;
    }
    const Owned<CFArrayRef> list(CGWindowListCopyWindowInfo(option, kCGNullWindowID));
    if (!list) {
        throw noSession();
    }
    std::vector<ListedWindow> windows;
    for (CFIndex index = 0; index < CFArrayGetCount(list.get()); ++index) {
        const auto* const window =
            static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(list.get(), index));
        const std::optional<int> process = numberOf(window, kCGWindowOwnerPID);
        const std::optional<Rectangle> bounds = boundsOf(window);
        if (numberOf(window, kCGWindowLayer) == normalLayer && process && bounds) {
            windows.push_back({*process, textOf(window, kCGWindowOwnerName), *bounds});
        }
    }
    return windows;
}

}  // namespace corvane::wintool
