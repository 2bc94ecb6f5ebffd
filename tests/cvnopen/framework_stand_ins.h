// Stand-ins of the Launch Services and Core Foundation functions, linked instead of the frameworks.
// They note every call with its arguments, in order, and answer what a test has told them to.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <string>
#include <vector>

namespace corvane::standins {

/// What the framework functions answer.
struct Answers {
    bool urlIsValid = true;
    OSStatus openUrlStatus = 0;
    OSStatus makeRefStatus = 0;
    OSStatus openRefStatus = 0;
};

inline Answers answers;

/// One line a call, as in "FSPathMakeRef('a.txt', ref, null)". The URL and the file reference that
/// a function hands out are written as "url" and "ref" wherever they come back as an argument.
inline std::vector<std::string> calls;

/// Forgets all calls and lets every function succeed.
void reset();

}  // namespace corvane::standins
