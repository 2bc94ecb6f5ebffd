// What clients of a confined server reach (platform/confinement.h). The kernel lets nothing outside
// be read or changed, but it tells whether a file is there to everybody, and it lets the server
// itself read its own files; a client must be told neither.
#pragma once

#include <string>

namespace corvane {

/// Whether a place lies in the folders that the server is confined to; always when it is not
/// confined. Links are followed, also by the last component, and nothing needs to exist: where a
/// file is not there, the nearest directory counts. A directory that its user may not list does not
/// lie in reach. `name` is in the file system's character set, relative to an open directory
/// (AT_FDCWD for the working directory).
bool isWithinReach(int directory, std::string name);

/// The same for the place that holds an entry, which may itself be a link to anywhere; `path` is
/// UTF-8.
bool isEntryWithinReach(const std::string& path);

}  // namespace corvane
