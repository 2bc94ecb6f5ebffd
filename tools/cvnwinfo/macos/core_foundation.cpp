#include "cvnwinfo/macos/core_foundation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace corvane::wintool {

namespace {

int wholePoints(CGFloat value) {
    constexpr CGFloat limit = 1e6;
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<int>(std::clamp(value, -limit, limit) + (value < 0 ? -0.5 : 0.5));
}

}  // namespace

Owned<CFStringRef> makeString(const char* text) {
    return Owned<CFStringRef>(
        CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8));
}

std::string toUtf8(CFStringRef text) {
    const CFIndex size =
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(text), kCFStringEncodingUTF8) + 1;
    std::string result(static_cast<std::size_t>(size), '\0');
    if (CFStringGetCString(text, result.data(), size, kCFStringEncodingUTF8) == 0) {
        return {};
    }
    result.resize(std::strlen(result.c_str()));
    return result;
}

Rectangle toRectangle(const CGRect& rectangle) {
    return {{wholePoints(rectangle.origin.x), wholePoints(rectangle.origin.y)},
            {wholePoints(rectangle.size.width), wholePoints(rectangle.size.height)}};
}

}  // namespace corvane::wintool
