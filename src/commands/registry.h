// The registry emulation: values by a full key, looked up in text files of key=value lines. Nothing
// is kept between look-ups, so that an edited file counts at once.
#pragma once

#include <string>

namespace corvane {

/// The value of ROOT/PATH:NAME, letter case ignored, from the first file that has it: the user's
/// ".corvane/registry.txt" in the home directory, "registry.txt" beside the program,
/// "/etc/corvane/registry.txt". `root` must be one of the five root names, exactly spelled. Throws
/// Exception for another root and for a key that no file has.
std::string getRegString(const std::string& root, const std::string& path, const std::string& name);

/// The same, with the failure logged and `defaultValue` returned instead of an Exception.
std::string getRegString(const std::string& root, const std::string& path, const std::string& name,
                         const std::string& defaultValue);

/// Always throws Exception: the registry is read-only.
void setRegString(const std::string& root, const std::string& path, const std::string& name,
                  const std::string& value);

}  // namespace corvane
