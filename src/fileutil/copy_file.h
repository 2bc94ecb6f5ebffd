// Copying one file relative to open directories, as the single copy and the copy of a tree both
// need it.
#pragma once

#include <string>

namespace corvane {

/// A file by the open directory it is reached from (AT_FDCWD for a path) and the full path that
/// messages show.
struct FilePlace {
    int directory;
    std::string name;
    std::string path;
};

/// Copies the contents of `src` to `dst`; see copyFile() for what it promises and throws. When a
/// directory of that name exists and `intoDirectory` is set, the copy goes into it under the
/// source's name. Returns false when both are the same file, which is left as it is.
bool copyFileAt(const FilePlace& src, const FilePlace& dst, bool intoDirectory);

}  // namespace corvane
