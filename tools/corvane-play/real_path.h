// Paths as the system sees them, with all links followed.
#pragma once

#include <string>

namespace corvane::play {

/// A path without links and without "." and ".."; empty, with errno, when it leads nowhere.
std::string realPath(const std::string& path);

}  // namespace corvane::play
