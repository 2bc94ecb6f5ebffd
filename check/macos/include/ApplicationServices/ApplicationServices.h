// The part of the ApplicationServices framework that this program uses: enough to compile the
// macOS sources, and to test them, on a machine without the macOS SDK. Types, values, signatures
// and deprecations are those of a 64-bit macOS; a build on a Mac includes the system's own header
// instead of this one.
#pragma once

// NOLINTBEGIN: the names and the C constructs are the framework's.
extern "C" {

typedef unsigned char UInt8;
typedef unsigned int UInt32;
typedef int SInt32;
typedef unsigned char Boolean;
typedef SInt32 OSStatus;

typedef long CFIndex;
typedef UInt32 CFStringEncoding;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFURL* CFURLRef;

/// An opaque reference to an existing file.
struct FSRef {
    UInt8 hidden[80];
};

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

extern const CFAllocatorRef kCFAllocatorDefault;

/// Returns null when the bytes are not a valid URL; the caller releases the result.
CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8* URLBytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL);
void CFRelease(CFTypeRef cf);

/// `outLaunchedURL` may be null.
OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef* outLaunchedURL);

/// `isDirectory` may be null; the path is UTF-8 and the file must exist.
[[deprecated]] OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

/// `outLaunchedRef` may be null.
[[deprecated]] OSStatus LSOpenFSRef(const FSRef* inRef, FSRef* outLaunchedRef);
}
// NOLINTEND
