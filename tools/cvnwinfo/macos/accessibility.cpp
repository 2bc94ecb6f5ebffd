#include "cvnwinfo/macos/accessibility.h"

#include <array>
#include <utility>

#include "cvnwinfo/title.h"

namespace corvane::wintool {

namespace {

constexpr float answerSeconds = 1;

// macOS gives the permission to the program that is responsible for this one, not to this one.
WindowError noPermission() {
    return WindowError(
        "no permission to see and move windows: in System Settings > Privacy & Security > "
        "Accessibility add the program that this one is started from, the terminal or, where "
        "launchd starts it, the server 'corvane'");
}

}  // namespace

void requirePermission() {
    std::array<const void*, 1> keys = {kAXTrustedCheckOptionPrompt};
    std::array<const void*, 1> values = {kCFBooleanTrue};
    const Owned<CFDictionaryRef> options(
        CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(), keys.size(),
                           &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    if (AXIsProcessTrustedWithOptions(options.get()) == 0) {
        throw noPermission();
    }
}

// A limit set for one element holds for no other, not even for the windows of an application.
void limitAnswerTime() {
    const Owned<AXUIElementRef> everyElement(AXUIElementCreateSystemWide());
    // Where this fails, the process as a whole still has its time limit.
    static_cast<void>(AXUIElementSetMessagingTimeout(everyElement.get(), answerSeconds));
}

Element::Element(pid_t process, std::string name)
    : element_(AXUIElementCreateApplication(process)), application_(std::move(name)) {}

Element::Element(Owned<AXUIElementRef> element, std::string application)
    : element_(std::move(element)), application_(std::move(application)) {}

std::vector<Element> Element::windows() const {
    const Owned<CFTypeRef> value = copy("AXWindows", CFArrayGetTypeID());
    if (!value) {
        return {};
    }
    const auto* const list = static_cast<CFArrayRef>(value.get());
    std::vector<Element> windows;
    for (CFIndex index = 0; index < CFArrayGetCount(list); ++index) {
        const void* const window = CFArrayGetValueAtIndex(list, index);
        if (CFGetTypeID(window) == AXUIElementGetTypeID()) {
            Owned<AXUIElementRef> owned(static_cast<AXUIElementRef>(CFRetain(window)));
            windows.push_back(Element(std::move(owned), application_));
        }
    }
    return windows;
}

std::string Element::title() const {
    const Owned<CFTypeRef> title = copy("AXTitle", CFStringGetTypeID());
    return title ? toUtf8(static_cast<CFStringRef>(title.get())) : std::string();
}

std::optional<Rectangle> Element::frame() const {
    CGRect frame = {};
    if (!read("AXPosition", kAXValueTypeCGPoint, &frame.origin) ||
        !read("AXSize", kAXValueTypeCGSize, &frame.size)) {
        return std::nullopt;
    }
    return toRectangle(frame);
}

bool Element::has(const char* flag) const {
    const Owned<CFTypeRef> value = copy(flag, CFBooleanGetTypeID());
    return value && CFBooleanGetValue(static_cast<CFBooleanRef>(value.get())) != 0;
}

bool Element::canSet(const char* attribute) const {
    const Owned<CFStringRef> name = makeString(attribute);
    Boolean settable = 0;
    const AXError error = AXUIElementIsAttributeSettable(element_.get(), name.get(), &settable);
    requireAnswer(error);
    return error == kAXErrorSuccess && settable != 0;
}

void Element::setPosition(Point position) const {
    const CGPoint point = {static_cast<CGFloat>(position.x), static_cast<CGFloat>(position.y)};
    set("AXPosition", kAXValueTypeCGPoint, &point);
}

void Element::setSize(Size size) const {
    const CGSize extent = {static_cast<CGFloat>(size.width), static_cast<CGFloat>(size.height)};
    set("AXSize", kAXValueTypeCGSize, &extent);
}

// The value is checked because it is the other application's.
Owned<CFTypeRef> Element::copy(const char* attribute, CFTypeID type) const {
    const Owned<CFStringRef> name = makeString(attribute);
    CFTypeRef copied = nullptr;
    const AXError error = AXUIElementCopyAttributeValue(element_.get(), name.get(), &copied);
    Owned<CFTypeRef> value(copied);
    requireAnswer(error);
    if (error != kAXErrorSuccess || !value || CFGetTypeID(value.get()) != type) {
        return nullptr;
    }
    return value;
}

bool Element::read(const char* attribute, AXValueType type, void* value) const {
    const Owned<CFTypeRef> copied = copy(attribute, AXValueGetTypeID());
    return copied && AXValueGetValue(static_cast<AXValueRef>(copied.get()), type, value) != 0;
}

void Element::set(const char* attribute, AXValueType type, const void* value) const {
    const Owned<CFStringRef> name = makeString(attribute);
    const Owned<AXValueRef> wrapped(AXValueCreate(type, value));
    const AXError error = AXUIElementSetAttributeValue(element_.get(), name.get(), wrapped.get());
    requireAnswer(error);
    if (error != kAXErrorSuccess) {
        throw WindowError("the application " + inQuotes(application_) +
                          " refused the request (error " + std::to_string(static_cast<int>(error)) +
                          ")");
    }
}

void Element::requireAnswer(AXError error) const {
    switch (error) {
        case kAXErrorCannotComplete:
            throw SilentApplication("the application " + inQuotes(application_) +
                                    " does not answer");
        case kAXErrorInvalidUIElement:
            throw WindowGone();
        case kAXErrorAPIDisabled:
            throw noPermission();
        default:
            break;
    }
}

}  // namespace corvane::wintool
