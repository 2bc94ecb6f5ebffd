// The part of the ApplicationServices framework that the programs use, with what it includes of
// Core Foundation, Core Graphics and the Accessibility API: enough to compile the macOS sources,
// and to test them, on a machine without the macOS SDK. Types, values, signatures and deprecations
// are those of a 64-bit macOS; a build on a Mac includes the system's own header instead of this
// one.
#pragma once

#include <sys/types.h>

#include <cstdint>

// NOLINTBEGIN: the names and the C constructs are the framework's.
extern "C" {

typedef unsigned char UInt8;
typedef unsigned int UInt32;
typedef int SInt32;
typedef unsigned char Boolean;
typedef SInt32 OSStatus;

typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef UInt32 CFStringEncoding;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFURL* CFURLRef;

/// An opaque reference to an existing file.
struct FSRef {
    UInt8 hidden[80];
};

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

enum CFNumberType : CFIndex { kCFNumberSInt32Type = 3 };

/// How a dictionary treats its keys and values; those below retain and release them.
typedef struct CFDictionaryKeyCallBacks CFDictionaryKeyCallBacks;
typedef struct CFDictionaryValueCallBacks CFDictionaryValueCallBacks;

extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

/// Returns null when the bytes are not a valid URL; the caller releases the result.
CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* URLBytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL);
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);

CFTypeID CFArrayGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef theArray);
/// Does not retain what it returns.
const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);

CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex numValues, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);
/// Does not retain what it returns; null when there is no such key.
const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key);

/// Returns false when the number does not fit.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr);

CFTypeID CFStringGetTypeID(void);
CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr,
                                      CFStringEncoding encoding);
/// In UTF-16 code units.
CFIndex CFStringGetLength(CFStringRef theString);
/// Without the terminating zero.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
/// Returns false when the text and its terminating zero do not fit.
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);

/// `outLaunchedURL` may be null.
OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef* outLaunchedURL);

/// `isDirectory` may be null; the path is UTF-8 and the file must exist.
[[deprecated]] OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

/// `outLaunchedRef` may be null.
[[deprecated]] OSStatus LSOpenFSRef(const FSRef* inRef, FSRef* outLaunchedRef);

typedef double CGFloat;
typedef std::uint32_t CGDirectDisplayID;
typedef std::uint32_t CGWindowID;
typedef std::uint32_t CGWindowListOption;

struct CGPoint {
    CGFloat x;
    CGFloat y;
};
struct CGSize {
    CGFloat width;
    CGFloat height;
};
struct CGRect {
    CGPoint origin;
    CGSize size;
};

enum : CGWindowID { kCGNullWindowID = 0 };
enum : CGWindowListOption {
    kCGWindowListOptionOnScreenOnly = 1U << 0U,
    kCGWindowListExcludeDesktopElements = 1U << 4U,
};

/// Keys of the dictionaries that describe windows: numbers, a text, and a dictionary of a CGRect.
extern const CFStringRef kCGWindowLayer;
extern const CFStringRef kCGWindowOwnerPID;
extern const CFStringRef kCGWindowOwnerName;
extern const CFStringRef kCGWindowBounds;

bool CGRectMakeWithDictionaryRepresentation(CFDictionaryRef dict, CGRect* rect);

/// Returns null outside of a graphical session; the caller releases the result.
CFDictionaryRef CGSessionCopyCurrentDictionary(void);
CGDirectDisplayID CGMainDisplayID(void);
/// In points of the global coordinate space; an empty rectangle when there is no such display.
CGRect CGDisplayBounds(CGDirectDisplayID display);
/// Dictionaries of the windows, the frontmost first when only those on the screen are asked for.
/// Returns null outside of a graphical session; the caller releases the result.
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow);

typedef const struct __AXUIElement* AXUIElementRef;
typedef const struct __AXValue* AXValueRef;

enum AXError : SInt32 {
    kAXErrorSuccess = 0,
    kAXErrorInvalidUIElement = -25202,
    kAXErrorCannotComplete = -25204,
    kAXErrorAPIDisabled = -25211,
};
enum AXValueType : UInt32 { kAXValueTypeCGPoint = 1, kAXValueTypeCGSize = 2 };

extern const CFStringRef kAXTrustedCheckOptionPrompt;

Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options);
CFTypeID AXUIElementGetTypeID(void);
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXUIElementRef AXUIElementCreateSystemWide(void);
/// For every element of this process when given that of the whole system.
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float timeoutInSeconds);
/// The caller releases `*value`, which is set when the call succeeds.
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value);
AXError AXUIElementIsAttributeSettable(AXUIElementRef element, CFStringRef attribute,
                                       Boolean* settable);
AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value);

CFTypeID AXValueGetTypeID(void);
AXValueRef AXValueCreate(AXValueType theType, const void* valuePtr);
/// Returns false when the value is of another type.
Boolean AXValueGetValue(AXValueRef value, AXValueType theType, void* valuePtr);
}
// NOLINTEND
