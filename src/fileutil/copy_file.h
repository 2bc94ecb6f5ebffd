// Copying one file, in steps, as the single copy, the copy of a tree and a move need it. What may
// go wrong and what is thrown is told at copyFile() in file_operations.h.
#pragma once

#include <string>

#include "fileutil/file_place.h"
#include "platform/guarded_open.h"

namespace corvane {

/// `dst`, or the place in it under the source's name where it is a directory.
std::string targetOf(const std::string& src, const std::string& dst);

/// Opens a regular file to read it.
OpenedFile openSource(const FilePlace& src);

/// What an existing target may be.
enum class Target {
    File,         ///< also a device, which keeps nothing
    RegularFile,  ///< anything else is refused with "open dst file '%s' error" (EINVAL)
};

/// Opens or creates a file to write to it, without emptying it. Throws "open dst file '%s' error";
/// with EINTR, and nothing touched, when the program has to stop.
OpenedFile openTarget(const FilePlace& dst, Target target);

bool isSameFile(const struct stat& a, const struct stat& b);

/// How far the bytes have to be when a copy has succeeded.
enum class Durability {
    Handed,  ///< with the system, which writes them to the disk in its own time
    OnDisk,  ///< on the disk, with the name of the file
};

/// Copies the contents of a file and closes the target, which is removed after a failure; `dst` is
/// a path when they have to be on the disk. Throws "read src file '%s' error" and "write dst file
/// '%s' error", the latter with EINTR when the program has to stop and there is a further block.
void copyContents(const OpenedFile& from, OpenedFile to, const FilePlace& src, const FilePlace& dst,
                  Durability durability);

/// Brings the directory that holds a file or directory to the disk, and with it the name of that. A
/// directory that may not be read cannot be brought there, which is no error. False with errno.
bool directoryToDisk(const std::string& localPath);

/// copyFile() for a place in a tree: when `dst` is a directory, into it under the source's name.
void copyFileToOrInto(const FilePlace& src, FilePlace dst);

}  // namespace corvane
