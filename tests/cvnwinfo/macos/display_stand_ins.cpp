#include "cvnwinfo/macos/framework_stand_ins.h"
#include "cvnwinfo/macos/objects.h"

using namespace corvane::standins;

namespace {

Object key(const std::string& name) {
    Object object;
    object.name = name;
    object.constant = true;
    return object;
}

Object layerKey = key("kCGWindowLayer");
Object processKey = key("kCGWindowOwnerPID");
Object applicationKey = key("kCGWindowOwnerName");
Object boundsKey = key("kCGWindowBounds");

Object& describe(const FakeWindow& window) {
    if (!window.described) {
        return create(Kind::dictionary, "empty description");
    }
    Object& bounds = create(Kind::dictionary, "bounds");
    bounds.rectangle = window.frame;
    Object& description = create(Kind::dictionary, "description");
    description.values = {
        {&layerKey, &createNumber(window.layer)},
        {&processKey, &createNumber(window.process)},
        {&applicationKey, &create(Kind::string, "App " + std::to_string(window.process))},
        {&boundsKey, &bounds}};
    return description;
}

}  // namespace

const CFStringRef kCGWindowLayer = referenceOf<CFStringRef>(layerKey);
const CFStringRef kCGWindowOwnerPID = referenceOf<CFStringRef>(processKey);
const CFStringRef kCGWindowOwnerName = referenceOf<CFStringRef>(applicationKey);
const CFStringRef kCGWindowBounds = referenceOf<CFStringRef>(boundsKey);

bool CGRectMakeWithDictionaryRepresentation(CFDictionaryRef dictionary, CGRect* rectangle) {
    *rectangle = objectOf(dictionary, Kind::dictionary).rectangle;
    return true;
}

CFDictionaryRef CGSessionCopyCurrentDictionary() {
    calls.emplace_back("CGSessionCopyCurrentDictionary()");
    return world.session ? referenceOf<CFDictionaryRef>(create(Kind::dictionary, "session"))
                         : nullptr;
}

CGDirectDisplayID CGMainDisplayID() {
    calls.emplace_back("CGMainDisplayID()");
    return 5;
}

CGRect CGDisplayBounds(CGDirectDisplayID display) {
    calls.push_back("CGDisplayBounds(" + std::to_string(display) + ")");
    return world.mainDisplay;
}

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeTo) {
    calls.push_back("CGWindowListCopyWindowInfo(" + std::to_string(option) + ", " +
                    std::to_string(relativeTo) + ")");
    if (!world.listsWindows) {
        return nullptr;
    }
    Object& list = create(Kind::array, "list of windows");
    for (const FakeWindow& window : world.windows) {
        if (window.onScreen || (option & kCGWindowListOptionOnScreenOnly) == 0) {
            list.items.push_back(&describe(window));
        }
    }
    return referenceOf<CFArrayRef>(list);
}
