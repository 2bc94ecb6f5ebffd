// A directory of the process's own for targets that need files; it goes away with the process.
#pragma once

#include <string>
#include <string_view>

namespace corvane::fuzz {

/// The directory, without a trailing "/"; made at the first call.
const std::string& scratchDirectory();

/// Writes `bytes` to a file in the directory, in place of what it held, and returns its path.
std::string scratchFile(std::string_view bytes);

}  // namespace corvane::fuzz
