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

/// What an existing target of a copy may be.
enum class Target {
    File,         ///< also a device, which keeps nothing
    RegularFile,  ///< anything else is refused with "open dst file '%s' error" (EINVAL)
};

/// Copies the contents of `src` to `dst`; see copyFile() for what it promises and throws. Returns
/// false when both are the same file, which is left as it is.
bool copyFileAt(const FilePlace& src, const FilePlace& dst, Target target);

/// The same, but when `dst` is a directory, the copy goes into it under the source's name.
void copyFileToOrInto(const FilePlace& src, FilePlace dst);

}  // namespace corvane
