// What failed operations on files and directories are reported with. Paths are UTF-8; `error` is
// the errno value of the call that failed.
#pragma once

#include <string>

#include "text/exception.h"

namespace corvane {

/// "ACTION file '%s' error"; the actions are "open src", "open dst", "read src", "write dst",
/// "remove" and "read".
IOException fileError(const char* action, const std::string& path, int error);

/// "opendir '%s' error %d", for a directory that cannot be listed.
IOException openDirectoryError(const std::string& path, int error);

/// "makeDirectory '%s' error".
IOException makeDirectoryError(const std::string& path, int error);

/// "cannot copy directory '%s' into itself as '%s'" (EINVAL).
IOException copyIntoItselfError(const std::string& src, const std::string& dst);

/// "remove directory '%s' error".
IOException removeDirectoryError(const std::string& path, int error);

}  // namespace corvane
