#include "cvnopen/framework_stand_ins.h"

#include <algorithm>
#include <string_view>

using namespace corvane::standins;

namespace {

// The addresses of these objects are the references that the stand-ins hand out.
const int allocator = 0;
const int url = 0;

constexpr UInt8 refMark = 0x5A;

std::string nameOf(CFTypeRef reference) {
    if (reference == nullptr) {
        return "null";
    }
    if (reference == &url) {
        return "url";
    }
    return reference == &allocator ? "kCFAllocatorDefault" : "unknown";
}

std::string nameOf(const FSRef* ref) {
    if (ref == nullptr) {
        return "null";
    }
    const auto all = [ref](UInt8 value) {
        return std::all_of(std::begin(ref->hidden), std::end(ref->hidden),
                           [value](UInt8 byte) { return byte == value; });
    };
    if (all(refMark)) {
        return "ref";
    }
    return all(0) ? "zeroed ref" : "unknown";
}

std::string presence(const void* pointer) { return pointer == nullptr ? "null" : "unknown"; }

std::string quoted(std::string_view text) { return std::string("'").append(text).append("'"); }

std::string quoted(const UInt8* text) { return quoted(reinterpret_cast<const char*>(text)); }

}  // namespace

namespace corvane::standins {

void reset() {
    answers = Answers{};
    calls.clear();
}

}  // namespace corvane::standins

const CFAllocatorRef kCFAllocatorDefault = reinterpret_cast<CFAllocatorRef>(&allocator);

CFURLRef CFURLCreateWithBytes(CFAllocatorRef from, const UInt8* bytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef base) {
    const std::string_view text(reinterpret_cast<const char*>(bytes),
                                static_cast<std::size_t>(length));
    calls.push_back("CFURLCreateWithBytes(" + nameOf(from) + ", " + quoted(text) + ", " +
                    std::to_string(length) + ", " + std::to_string(encoding) + ", " + nameOf(base) +
                    ")");
    return answers.urlIsValid ? reinterpret_cast<CFURLRef>(&url) : nullptr;
}

void CFRelease(CFTypeRef reference) { calls.push_back("CFRelease(" + nameOf(reference) + ")"); }

OSStatus LSOpenCFURLRef(CFURLRef toOpen, CFURLRef* launched) {
    calls.push_back("LSOpenCFURLRef(" + nameOf(toOpen) + ", " + presence(launched) + ")");
    return answers.openUrlStatus;
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
    calls.push_back("FSPathMakeRef(" + quoted(path) + ", " + nameOf(ref) + ", " +
                    presence(isDirectory) + ")");
    if (answers.makeRefStatus == 0) {
        std::fill(std::begin(ref->hidden), std::end(ref->hidden), refMark);
    }
    return answers.makeRefStatus;
}

OSStatus LSOpenFSRef(const FSRef* ref, FSRef* launched) {
    calls.push_back("LSOpenFSRef(" + nameOf(ref) + ", " + presence(launched) + ")");
    return answers.openRefStatus;
}
