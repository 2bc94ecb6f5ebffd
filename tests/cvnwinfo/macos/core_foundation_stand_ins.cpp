#include <algorithm>
#include <cstring>

#include "cvnwinfo/macos/objects.h"

using namespace corvane::standins;

namespace {

Object constant(Kind kind, const std::string& name, int number = 0) {
    Object object;
    object.kind = kind;
    object.name = name;
    object.constant = true;
    object.number = number;
    return object;
}

Object allocator = constant(Kind::value, "kCFAllocatorDefault");
Object trueValue = constant(Kind::boolean, "true", 1);

CFTypeID typeOf(Kind kind) { return static_cast<CFTypeID>(kind); }

}  // namespace

struct CFDictionaryKeyCallBacks {};
struct CFDictionaryValueCallBacks {};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {};
const CFAllocatorRef kCFAllocatorDefault = referenceOf<CFAllocatorRef>(allocator);
const CFBooleanRef kCFBooleanTrue = referenceOf<CFBooleanRef>(trueValue);

CFTypeID CFArrayGetTypeID() { return typeOf(Kind::array); }

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(objectOf(array, Kind::array).items.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    return objectOf(array, Kind::array).items.at(static_cast<std::size_t>(index));
}

CFTypeID CFBooleanGetTypeID() { return typeOf(Kind::boolean); }

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return objectOf(boolean, Kind::boolean).number != 0 ? 1 : 0;
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
    if (keyCallBacks != &kCFTypeDictionaryKeyCallBacks ||
        valueCallBacks != &kCFTypeDictionaryValueCallBacks) {
        misuses.emplace_back("a dictionary that does not hold its entries");
    }
    Object& dictionary = create(Kind::dictionary, "");
    for (CFIndex index = 0; index < count; ++index) {
        Object& value = objectOf(values[index]);
        ++value.references;
        dictionary.values[keys[index]] = &value;
        dictionary.name += objectOf(keys[index]).name + ": " + value.name;
    }
    return referenceOf<CFDictionaryRef>(dictionary);
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    const auto& values = objectOf(dictionary, Kind::dictionary).values;
    const auto found = values.find(key);
    return found == values.end() ? nullptr : found->second;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (type != kCFNumberSInt32Type) {
        return 0;
    }
    std::memcpy(value, &objectOf(number, Kind::number).number, sizeof(std::int32_t));
    return 1;
}

CFTypeID CFStringGetTypeID() { return typeOf(Kind::string); }

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding) {
    return referenceOf<CFStringRef>(create(Kind::string, text));
}

CFIndex CFStringGetLength(CFStringRef text) {
    return static_cast<CFIndex>(objectOf(text, Kind::string).name.size());
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding) { return length; }

// A text with the byte 0xFF stands for one that has no UTF-8.
Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex size,
                           CFStringEncoding encoding) {
    const std::string& bytes = objectOf(text, Kind::string).name;
    if (encoding != kCFStringEncodingUTF8 || bytes.find('\xFF') != std::string::npos ||
        static_cast<CFIndex>(bytes.size()) >= size) {
        return 0;
    }
    std::copy_n(bytes.c_str(), bytes.size() + 1, buffer);
    return 1;
}
