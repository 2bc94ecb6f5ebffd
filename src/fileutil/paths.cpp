#include "fileutil/paths.h"

#include <log4cpp/Category.hh>

#include "text/strings.h"

namespace corvane {
namespace {

bool isSeparator(char c) { return c == SEPARATOR_DIR || c == SEPARATOR_DIR_INVALID; }

void addSlash(std::string& path) {
    if (!path.empty() && !isSeparator(path.back())) {
        path += SEPARATOR_DIR;
    }
}

void correctSeparators(std::string& path) {
    for (std::size_t at = path.find(SEPARATOR_DIR_INVALID); at != std::string::npos;
         at = path.find(SEPARATOR_DIR_INVALID, at + 1)) {
        path[at] = SEPARATOR_DIR;
    }
}

}  // namespace

std::string slashPath(std::string path) {
    addSlash(path);
    return path;
}

std::string unslashPath(const std::string& path) {
    return path.empty() || !isSeparator(path.back()) ? path : path.substr(0, path.size() - 1);
}

std::string correctPath(std::string path) {
    correctSeparators(path);
    return path;
}

std::string correctDirectoryPath(std::string path) {
    correctSeparators(path);
    addSlash(path);
    return path;
}

std::string correctPathInvalidChars(const std::string& path) {
    std::string corrected = strreplace(strreplace(path, "?", ""), "*", "");
    if (corrected != path) {
        static log4cpp::Category& log =
            log4cpp::Category::getInstance("corvane.fileutil.correctPathInvalidChars");
        log.warn("path '%s' has invalid char(s) and was converted to '%s'", path.c_str(),
                 corrected.c_str());
    }
    return corrected;
}

bool isFullPath(const std::string& path) { return !path.empty() && isSeparator(path.front()); }

std::string getFullPath(const std::string& path) {
    return isFullPath(path) ? path : correctPath(getCurrentDirectory() + path);
}

std::string getDirectory(const std::string& path) {
    const std::size_t slash = path.rfind(SEPARATOR_DIR);
    return slash == std::string::npos ? path : path.substr(0, slash + 1);
}

std::string getFileName(const std::string& path) {
    return path.substr(path.rfind(SEPARATOR_DIR) + 1);  // npos + 1 is 0: the whole path
}

std::string getExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.rfind(SEPARATOR_DIR);
    if (dot == std::string::npos || (slash != std::string::npos && dot <= slash)) {
        return "";
    }
    return path.substr(dot + 1);
}

std::string removePathParams(const std::string& path) { return path.substr(0, path.rfind('?')); }

}  // namespace corvane
