#include "fileutil/copy_options.h"

#include <algorithm>

#include "fileutil/paths.h"
#include "text/strings.h"

namespace corvane {
namespace {

bool holds(const std::vector<std::string>& list, const std::string& ext) {
    return std::find(list.begin(), list.end(), ext) != list.end();
}

}  // namespace

void CopyOptions::addExt(bool include, const std::string& ext) {
    (include ? includeExts : excludeExts).push_back(trim(ext));
}

void CopyOptions::addExts(bool include, const std::string& list) {
    for (const std::string& piece : strExplode(list, ",")) {
        if (const std::string ext = trim(piece); !ext.empty()) {
            addExt(include, ext);
        }
    }
}

bool CopyOptions::isAllowed(const std::string& path) const {
    const std::string ext = getExtension(path);
    if (!includeExts.empty() && !holds(includeExts, ext)) {
        return false;
    }
    return !holds(excludeExts, ext);
}

}  // namespace corvane
