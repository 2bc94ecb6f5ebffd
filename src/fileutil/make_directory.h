// Creating one directory, by its path or relative to an open directory.
#pragma once

#include "fileutil/file_place.h"

namespace corvane {

/// makeDirectory() of file_operations.h for a place in a tree.
bool makeDirectoryAt(const FilePlace& place);

}  // namespace corvane
