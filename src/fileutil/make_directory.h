// Creating directories, as makeDirectory() and the copy of a tree both need it.
#pragma once

#include <sys/types.h>

#include <string>

#include "text/exception.h"

namespace corvane {

inline constexpr mode_t newDirectoryMode = 0777;  // before the umask

/// "makeDirectory '%s' error".
IOException makeDirectoryError(const std::string& path, int error);

}  // namespace corvane
