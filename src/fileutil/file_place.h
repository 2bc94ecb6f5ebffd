// Where a file is, for operations that work on a path and, inside a tree, relative to an open
// directory.
#pragma once

#include <fcntl.h>

#include <string>

#include "text/strconv.h"

namespace corvane {

/// A file by the open directory it is reached from (AT_FDCWD for a path), its name there in the
/// file system's character set, and the full path that messages show.
struct FilePlace {
    int directory;
    std::string name;
    std::string path;
};

inline FilePlace placeOf(const std::string& path) {
    return {AT_FDCWD, strconv::utf82acs(path), path};
}

}  // namespace corvane
