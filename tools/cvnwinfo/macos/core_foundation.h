// What a program in C++ needs of Core Foundation and Core Graphics: references that are released
// when they go, texts in UTF-8, and rectangles in whole points.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <memory>
#include <string>
#include <type_traits>

#include "cvnwinfo/geometry.h"

namespace corvane::wintool {

struct ReleaseReference {
    void operator()(CFTypeRef reference) const { CFRelease(reference); }
};

/// An owned reference: the result of a function with Create or Copy in its name, or of CFRetain.
template <typename Reference>
using Owned = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseReference>;

/// `text`, in UTF-8, as a string of Core Foundation.
Owned<CFStringRef> makeString(const char* text);

/// The text in UTF-8; empty when it cannot be converted.
std::string toUtf8(CFStringRef text);

/// Rounded to whole points; what other programs report is kept within a million.
Rectangle toRectangle(const CGRect& rectangle);

}  // namespace corvane::wintool
