#include "fileutil/make_directory.h"

#include <sys/stat.h>

#include <cerrno>

#include "fileutil/file_errors.h"
#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "fileutil/reach.h"

namespace corvane {
namespace {

constexpr mode_t newDirectoryMode = 0777;  // before the umask

// One trailing separator is ignored, as by isDirectory().
bool isDirectoryAt(const FilePlace& place) {
    struct stat info {};
    return ::fstatat(place.directory, unslashPath(place.name).c_str(), &info, 0) == 0 &&
           S_ISDIR(info.st_mode);
}

}  // namespace

bool makeDirectoryAt(const FilePlace& place) {
    if (::mkdirat(place.directory, place.name.c_str(), newDirectoryMode) == 0) {
        return true;
    }
    const int error = errno;
    if (!isWithinReach(place.directory, place.name)) {
        throw makeDirectoryError(place.path, EACCES);
    }
    if (error == EEXIST && isDirectoryAt(place)) {
        return false;
    }
    throw makeDirectoryError(place.path, error);
}

bool makeDirectory(const std::string& path) { return makeDirectoryAt(placeOf(path)); }

}  // namespace corvane
