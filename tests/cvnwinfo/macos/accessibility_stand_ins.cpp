#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "cvnwinfo/macos/framework_stand_ins.h"
#include "cvnwinfo/macos/objects.h"

using namespace corvane::standins;

namespace {

constexpr AXError noSuchAttribute = AXError{-25205};

Object promptKey() {
    Object object;
    object.name = "kAXTrustedCheckOptionPrompt";
    object.constant = true;
    return object;
}

Object prompt = promptKey();
constexpr std::int32_t noApplication = -1;

std::string pair(CGFloat first, char separator, CGFloat second) {
    return std::to_string(std::lround(first)) + separator + std::to_string(std::lround(second));
}

Object& createValue(AXValueType type, const CGRect& rectangle) {
    Object& value =
        create(Kind::value, type == kAXValueTypeCGPoint
                                ? pair(rectangle.origin.x, ',', rectangle.origin.y)
                                : pair(rectangle.size.width, 'x', rectangle.size.height));
    value.type = type;
    value.rectangle = rectangle;
    return value;
}

Object& windowsOf(pid_t process) {
    Object& list = create(Kind::array, "windows");
    if (world.numbersForWindows) {
        list.items.push_back(&createNumber(3));
        return list;
    }
    for (std::size_t index = world.windows.size(); index-- > 0;) {
        const FakeWindow& window = world.windows[index];
        if (window.process == process) {
            Object& element = create(Kind::element, "window '" + window.title + "'");
            element.number = noApplication;
            element.window = index;
            list.items.push_back(&element);
        }
    }
    return list;
}

Object& flag(bool set) {
    Object& boolean = create(Kind::boolean, set ? "true" : "false");
    boolean.number = set ? 1 : 0;
    return boolean;
}

const CGRect& frameNow(FakeWindow& window) {
    if (window.pending > 0 && --window.pending == 0) {
        window.frame = window.target;
    }
    return window.frame;
}

Object* attributeOf(FakeWindow& window, const std::string& name) {
    if (name == window.oddAttribute) {
        return &createNumber(3);
    }
    if (name == "AXTitle") {
        return &create(Kind::string, window.title);
    }
    if (name == "AXPosition") {
        return &createValue(kAXValueTypeCGPoint, frameNow(window));
    }
    if (name == "AXSize") {
        return &createValue(kAXValueTypeCGSize, window.frame);
    }
    if (name == "AXMinimized") {
        return &flag(window.minimised);
    }
    return name == "AXFullScreen" ? &flag(window.fullScreen) : nullptr;
}

AXError errorOf(const Object& element, const std::string& attribute) {
    if (element.number != noApplication) {
        const auto found = world.applicationErrors.find(element.number);
        return found == world.applicationErrors.end() ? kAXErrorSuccess : found->second;
    }
    const auto& errors = world.windows.at(element.window).errors;
    const auto found = errors.find(attribute);
    return found == errors.end() ? kAXErrorSuccess : found->second;
}

void note(const std::string& function, const std::string& arguments) {
    calls.push_back(function + "(" + arguments + ")");
}

}  // namespace

namespace corvane::standins {

void reset() {
    world = World{};
    calls.clear();
    forgetObjects();
}

}  // namespace corvane::standins

const CFStringRef kAXTrustedCheckOptionPrompt = referenceOf<CFStringRef>(prompt);

Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
    note("AXIsProcessTrustedWithOptions", objectOf(options, Kind::dictionary).name);
    return world.trusted ? 1 : 0;
}

CFTypeID AXUIElementGetTypeID() { return static_cast<CFTypeID>(Kind::element); }
CFTypeID AXValueGetTypeID() { return static_cast<CFTypeID>(Kind::value); }

AXUIElementRef AXUIElementCreateApplication(pid_t process) {
    note("AXUIElementCreateApplication", std::to_string(process));
    Object& element = create(Kind::element, "application " + std::to_string(process));
    element.number = process;
    return referenceOf<AXUIElementRef>(element);
}

AXUIElementRef AXUIElementCreateSystemWide() {
    note("AXUIElementCreateSystemWide", "");
    return referenceOf<AXUIElementRef>(create(Kind::element, "everything"));
}

AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds) {
    note("AXUIElementSetMessagingTimeout",
         objectOf(element, Kind::element).name + ", " + std::to_string(seconds));
    return kAXErrorSuccess;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef reference, CFStringRef attribute,
                                      CFTypeRef* value) {
    const Object& element = objectOf(reference, Kind::element);
    const std::string& name = objectOf(attribute, Kind::string).name;
    note("AXUIElementCopyAttributeValue", element.name + ", " + name);
    while (world.stuck) {
        pause();
    }
    if (const AXError error = errorOf(element, name); error != kAXErrorSuccess) {
        return error;
    }
    const Object* const copied = element.number == noApplication
                                     ? attributeOf(world.windows.at(element.window), name)
                                     : &windowsOf(element.number);
    *value = copied;
    return copied == nullptr ? noSuchAttribute : kAXErrorSuccess;
}

AXError AXUIElementIsAttributeSettable(AXUIElementRef reference, CFStringRef attribute,
                                       Boolean* settable) {
    const Object& element = objectOf(reference, Kind::element);
    const std::string& name = objectOf(attribute, Kind::string).name;
    note("AXUIElementIsAttributeSettable", element.name + ", " + name);
    const FakeWindow& window = world.windows.at(element.window);
    *settable = (name == "AXSize" ? window.resizable : window.movable) ? 1 : 0;
    return errorOf(element, "settable " + name);
}

AXError AXUIElementSetAttributeValue(AXUIElementRef reference, CFStringRef attribute,
                                     CFTypeRef newValue) {
    const Object& element = objectOf(reference, Kind::element);
    const std::string& name = objectOf(attribute, Kind::string).name;
    const Object& value = objectOf(newValue, Kind::value);
    note("AXUIElementSetAttributeValue", element.name + ", " + name + ", " + value.name);
    if (const AXError error = errorOf(element, "set " + name); error != kAXErrorSuccess) {
        return error;
    }
    FakeWindow& window = world.windows.at(element.window);
    CGRect target = window.pending > 0 ? window.target : window.frame;
    if (name == "AXPosition") {
        target.origin = value.rectangle.origin;
    } else {
        target.size = {std::min(value.rectangle.size.width, window.largest.width),
                       std::min(value.rectangle.size.height, window.largest.height)};
    }
    window.target = target;
    window.pending = window.delay;
    window.frame = window.delay > 0 ? window.frame : target;
    if (window.closesWhenMoved) {
        window.errors["AXPosition"] = kAXErrorInvalidUIElement;
    }
    return kAXErrorSuccess;
}

AXValueRef AXValueCreate(AXValueType type, const void* content) {
    CGRect rectangle = {};
    if (type == kAXValueTypeCGPoint) {
        rectangle.origin = *static_cast<const CGPoint*>(content);
    } else {
        rectangle.size = *static_cast<const CGSize*>(content);
    }
    return referenceOf<AXValueRef>(createValue(type, rectangle));
}

Boolean AXValueGetValue(AXValueRef reference, AXValueType type, void* content) {
    const Object& value = objectOf(reference, Kind::value);
    if (value.type != type) {
        return 0;
    }
    if (type == kAXValueTypeCGPoint) {
        *static_cast<CGPoint*>(content) = value.rectangle.origin;
    } else {
        *static_cast<CGSize*>(content) = value.rectangle.size;
    }
    return 1;
}
