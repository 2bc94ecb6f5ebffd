#include "fileutil/make_directory.h"

#include <sys/stat.h>

#include <cerrno>

#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {

IOException makeDirectoryError(const std::string& path, int error) {
    return {format("makeDirectory '%s' error", path.c_str()), error};
}

bool makeDirectory(const std::string& path) {
    if (::mkdir(strconv::utf82acs(path).c_str(), newDirectoryMode) == 0) {
        return true;
    }
    const int error = errno;
    if (error == EEXIST && isDirectory(path)) {
        return false;
    }
    throw makeDirectoryError(path, error);
}

}  // namespace corvane
