#include "fileutil/file_errors.h"

#include <cerrno>

#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {

IOException fileError(const char* action, const std::string& path, int error) {
    return {format("%s file '%s' error", action, path.c_str()), error};
}

IOException openDirectoryError(const std::string& path, int error) {
    return {format("opendir '%s' error %d", strconv::utf82acs(path).c_str(), error), error};
}

IOException makeDirectoryError(const std::string& path, int error) {
    return {format("makeDirectory '%s' error", path.c_str()), error};
}

IOException copyIntoItselfError(const std::string& src, const std::string& dst) {
    return {format("cannot copy directory '%s' into itself as '%s'", src.c_str(), dst.c_str()),
            EINVAL};
}

IOException removeDirectoryError(const std::string& path, int error) {
    return {format("remove directory '%s' error", path.c_str()), error};
}

}  // namespace corvane
