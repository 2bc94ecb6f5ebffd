#include "cvnwinfo/macos/objects.h"

#include <memory>

namespace corvane::standins {

namespace {

std::vector<std::unique_ptr<Object>> objects;

}  // namespace

Object& create(Kind kind, const std::string& name) {
    objects.push_back(std::make_unique<Object>());
    Object& object = *objects.back();
    object.kind = kind;
    object.name = name;
    return object;
}

Object& createNumber(std::int32_t number) {
    Object& object = create(Kind::number, std::to_string(number));
    object.number = number;
    return object;
}

Object& objectOf(CFTypeRef reference) {
    static Object null;
    if (reference == nullptr) {
        misuses.emplace_back("used: null");
        return null;
    }
    auto& object = *static_cast<Object*>(const_cast<void*>(reference));
    if (object.references <= 0) {
        misuses.push_back("used after its release: " + object.name);
    }
    return object;
}

Object& objectOf(CFTypeRef reference, Kind kind) {
    Object& object = objectOf(reference);
    if (object.kind != kind) {
        misuses.push_back("taken for something else: " + object.name);
    }
    return object;
}

std::vector<std::string> unreleased() {
    std::vector<std::string> names;
    for (const auto& object : objects) {
        if (object->references > 0) {
            names.push_back(object->name);
        }
    }
    return names;
}

void forgetObjects() {
    objects.clear();
    misuses.clear();
}

}  // namespace corvane::standins

using namespace corvane::standins;

CFTypeRef CFRetain(CFTypeRef reference) {
    ++objectOf(reference).references;
    return reference;
}

void CFRelease(CFTypeRef reference) {
    Object& object = objectOf(reference);
    if (object.constant && object.references == 1) {
        misuses.push_back("released a constant: " + object.name);
        return;
    }
    if (--object.references == 0) {
        for (const Object* item : object.items) {
            CFRelease(item);
        }
        for (const auto& [key, value] : object.values) {
            CFRelease(value);
        }
    }
}

CFTypeID CFGetTypeID(CFTypeRef reference) {
    return static_cast<CFTypeID>(objectOf(reference).kind);
}
