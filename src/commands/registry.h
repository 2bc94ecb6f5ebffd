// The registry emulation: values by a full key, looked up in text files of key=value lines. Nothing
// is kept between look-ups, so that an edited file counts at once.
#pragma once

#include <array>
#include <functional>
#include <string>

namespace corvane {

/// The value of ROOT/PATH:NAME, letter case ignored, from the first file that has it: the user's
/// ".corvane/registry.txt" in the home directory, "registry.txt" beside the program,
/// "/etc/corvane/registry.txt". `root` must be one of the five root names, exactly spelled. Throws
/// Exception for another root and for a key that no file has.
std::string getRegString(const std::string& root, const std::string& path, const std::string& name);

/// The same, with the failure logged and `defaultValue` returned instead of an Exception. A
/// provided interface that the program itself does not call.
std::string getRegString(const std::string& root, const std::string& path, const std::string& name,
                         const std::string& defaultValue);

/// The paths of the registry files in the order in which they are searched. Each is asked for only
/// when its turn comes, since a path may be unknown (IOException) and yet not needed.
using RegistryFiles = std::array<std::function<std::string()>, 3>;
RegistryFiles registryFiles();

/// The value of a whole key "ROOT/PATH:NAME" from the first of the files that has it. A file that
/// cannot be read is skipped. Throws Exception when none has it.
std::string findRegString(const std::string& key, const RegistryFiles& files);

/// Always throws Exception: the registry is read-only.
void setRegString(const std::string& root, const std::string& path, const std::string& name,
                  const std::string& value);

}  // namespace corvane
