// What lies behind the references that the stand-ins of the frameworks hand out: objects that count
// their references and are kept until a test is over, so that every wrong use is seen.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corvane::standins {

enum class Kind : CFTypeID { array = 1, boolean, dictionary, number, string, element, value };

struct Object {
    Kind kind = Kind::string;
    std::string name;  ///< how calls and failures tell of it
    int references = 1;
    bool constant = false;  ///< its first reference is the framework's

    std::int32_t number = 0;  ///< of a number, a boolean or the application of an element
    AXValueType type = kAXValueTypeCGPoint;
    CGRect rectangle = {};
    std::vector<Object*> items;             ///< each counts as one reference
    std::map<const void*, Object*> values;  ///< of a dictionary, likewise
    std::size_t window = 0;                 ///< index of the window that an element is
};

/// A new object with one reference.
Object& create(Kind kind, const std::string& name);

Object& createNumber(std::int32_t number);

/// The object behind a reference that is passed in. One that is null or released is a misuse, and
/// so is one of another kind than the function is for.
Object& objectOf(CFTypeRef reference);
Object& objectOf(CFTypeRef reference, Kind kind);

template <typename Reference>
Reference referenceOf(const Object& object) {
    return reinterpret_cast<Reference>(&object);
}

/// The names of the objects that have not been released.
std::vector<std::string> unreleased();

/// What a real framework would not have survived, as in "released too often: 'AXTitle'".
inline std::vector<std::string> misuses;

/// Forgets all objects and misuses.
void forgetObjects();

}  // namespace corvane::standins
