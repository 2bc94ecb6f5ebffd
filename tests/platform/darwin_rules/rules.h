// Rules of Darwin's kernel and C library that Linux does not have, as a library to preload into the
// server: where both systems offer a call, it behaves as on macOS. They hold for the server alone,
// not for the programs that it starts.
#pragma once

#include <dlfcn.h>

namespace darwin_rules {

/// Whether the rules hold in this process.
bool hold();

/// The C library's own function.
template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace darwin_rules
