// A library to preload into the server: it makes the Nth call of one function fail. Environment:
//   CORVANE_FAULT_CALL    the function, such as "read"
//   CORVANE_FAULT_NTH     which call fails, 1 for the first
//   CORVANE_FAULT_ERRNO   the error number it fails with; 0 makes it do only half of its work
//   CORVANE_FAULT_REPORT  a file to which one line is written when that happens
// Calls count from the first accepted connection on, and only in the process that accepted it.
#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace corvane::faults {

/// Begins to count the calls of this process.
void arm();

/// Counts a call, and returns whether it is the one that fails; errno is set then.
bool isTheOne(std::string_view call);

/// The error number that the call fails with.
int faultError();

/// Whether the call succeeds, but does only half() of its work.
inline bool halves() { return faultError() == 0; }
inline std::size_t half(std::size_t count) { return std::max<std::size_t>(1, count / 2); }

/// The function of this name that the library stands in front of.
template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace corvane::faults
