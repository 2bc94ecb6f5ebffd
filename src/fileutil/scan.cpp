#include <unistd.h>

#include <cerrno>
#include <log4cpp/Category.hh>
#include <string_view>

#include "fileutil/file_errors.h"
#include "fileutil/file_info.h"
#include "fileutil/open_directory.h"
#include "fileutil/paths.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {

const std::string FileInfo::DIRECTORY = "d";
const std::string FileInfo::SYSTEM = "s";
const std::string FileInfo::HIDDEN = "h";
const std::string FileInfo::READONLY = "r";

namespace {

// Dropped at both ends of a name.
constexpr std::string_view skipchars = "\x03\r\n";

FileInfo describe(const DirectoryReader& reader, const dirent& entry) {
    const bool directory = reader.isDirectoryEntry(entry);
    FileInfo info(strconv::acs2utf8(trim(entry.d_name, skipchars)), directory ? 1 : 0);
    if (directory) {
        info.attributes += FileInfo::DIRECTORY;
        if (endsWith(info.name, ".app")) {
            info.attributes += FileInfo::SYSTEM;
        }
    }
    if (info.name == DIR_THIS || info.name == DIR_PARENT) {
        return info;
    }
    if (startsWith(info.name, ".")) {
        info.attributes += FileInfo::HIDDEN;
    }
    if (!directory && ::faccessat(reader.descriptor(), info.name.c_str(), W_OK, 0) != 0) {
        info.attributes += FileInfo::READONLY;
    }
    return info;
}

}  // namespace

std::vector<FileInfo> scanDirectory(const std::string& path) {
    log4cpp::Category::getInstance("corvane.fileutil.scanDirectory");
    if (path.empty()) {
        return {FileInfo("/", 1)};
    }
    DirectoryReader reader(openDirectory(strconv::utf82acs(path), DirectoryAccess::Read));
    if (!reader.isOpen()) {
        throw openDirectoryError(path, errno);
    }
    // A directory that cannot be read to its end is listed as far as it can.
    std::vector<FileInfo> entries;
    while (const dirent* entry = reader.next()) {
        entries.push_back(describe(reader, *entry));
    }
    if (errno == EINTR) {
        throw openDirectoryError(path, errno);
    }
    return entries;
}

}  // namespace corvane
