// Creating, copying, moving and removing files and directory trees. All functions take UTF-8 paths
// with "/" separators and throw IOException with the errno value of the call that failed; the first
// failure ends an operation, and what was done before stays done.
#pragma once

#include <string>

#include "fileutil/copy_options.h"

namespace corvane {

/// Creates one level, with mode 0777 before the umask. Returns false when the directory exists
/// already. Throws "makeDirectory '%s' error".
bool makeDirectory(const std::string& path);

/// Removes a file, or a symbolic link itself. A missing file is no error. Throws
/// "remove file '%s' error".
void removeFile(const std::string& path);

/// Removes an empty directory. A missing one is no error. Throws "remove directory '%s' error".
void removeDirectory(const std::string& path);

/// Empties the directory first when `recursive`. Symbolic links are removed, never followed, also
/// when `path` is one. The root directory is refused (EBUSY).
void removeDirectory(const std::string& path, bool recursive);

/// Copies the contents of one file; when `dst` is a directory, into it under the source's name. No
/// permissions or times are carried, and an existing longer target keeps its tail. A file copied
/// onto itself stays as it is. Pipes, sockets and devices are refused as a source, pipes and
/// sockets as a target (EINVAL). A directory as a source fails as if it had been read (EISDIR),
/// before the target is touched. After a failure while copying the partial target is removed.
/// Throws "open src file '%s' error", "open dst file '%s' error", "read src file '%s' error" and
/// "write dst file '%s' error".
void copyFile(const std::string& src, const std::string& dst);

/// Copies the contents of `src` into the existing directory `dst`; without `options` all of it. A
/// directory is not copied recursively to a place below itself (EINVAL).
void copyDirectory(const std::string& src, const std::string& dst, const CopyOptions* options);

/// Moves a file by copying and then removing it, which works across volumes; onto itself it stays
/// where it is. A directory is copied, and then removed only when it was empty: with contents the
/// copy and the source both stay and "remove directory '%s' error" is thrown. When `dst` is a
/// directory, the source goes into it under its own name. A device as target is refused (EINVAL):
/// it would not keep the contents.
void renameFile(const std::string& src, const std::string& dst);

}  // namespace corvane
