#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "fileutil/copy_file.h"
#include "fileutil/file_errors.h"
#include "fileutil/file_operations.h"
#include "fileutil/open_directory.h"
#include "fileutil/paths.h"
#include "fileutil/reach.h"

namespace corvane {
namespace {

// Whether it is this file that a place holds now.
bool holds(const FilePlace& place, const struct stat& file) {
    struct stat now {};
    return ::fstatat(place.directory, place.name.c_str(), &now, 0) == 0 && isSameFile(now, file);
}

// What has taken the place of the copied file meanwhile is not removed in its stead.
void removeCopied(const FilePlace& src, const struct stat& copied) {
    if (!holds(src, copied) && getFileMode(src.path) != 0) {
        throw fileError("remove", src.path, EBUSY);
    }
    removeFile(src.path);
}

void moveFile(const FilePlace& src, const FilePlace& dst) {
    const OpenedFile from = openSource(src);
    const bool wasSame = holds(dst, from.info);
    OpenedFile to = openTarget(dst, Target::RegularFile);
    // Where a file system is put together from layers, a file of a layer that stays as it is
    // becomes another one when it is opened to be written to.
    if (wasSame || isSameFile(from.info, to.info) || holds(src, to.info)) {
        return;
    }
    copyContents(from, std::move(to), src, dst, Durability::OnDisk);
    removeCopied(src, from.info);
}

void moveDirectory(const std::string& src, const std::string& target) {
    if (!isWithinReach(AT_FDCWD, placeOf(src).name)) {  // before the target is made
        throw openDirectoryError(src, EACCES);
    }
    if (liesWithin(placeOf(target).name, placeOf(src).name)) {
        throw copyIntoItselfError(src, target);
    }
    const bool isNew = makeDirectory(target);
    copyDirectory(src, target, nullptr);
    if (isNew && !directoryToDisk(placeOf(target).name)) {
        throw makeDirectoryError(target, errno);
    }
    removeDirectory(src);
}

}  // namespace

void renameFile(const std::string& src, const std::string& dst) {
    const std::string target = targetOf(src, dst);
    if (isDirectory(src)) {
        moveDirectory(src, target);
    } else {
        // A directory of the source's name is in the way: the copy goes into that one, too.
        moveFile(placeOf(src), placeOf(targetOf(src, target)));
    }
}

}  // namespace corvane
