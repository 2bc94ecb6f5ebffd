// Directory entries: listing a directory with what a client is told of each entry.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace corvane {

/// One entry of a directory.
struct FileInfo {
    /// Attribute letters.
    static const std::string DIRECTORY;
    static const std::string SYSTEM;
    static const std::string HIDDEN;
    static const std::string READONLY;

    FileInfo(std::string entryName, int entryType) : name(std::move(entryName)), type(entryType) {}

    /// UTF-8, without path.
    std::string name;
    /// 1 for a directory, 0 for anything else.
    int type;
    /// Letters from above, in the order d, s, h, r.
    std::string attributes;
    /// Left empty by scanDirectory().
    std::string date;
    /// In bytes; left 0 by scanDirectory().
    int size = 0;
};

/// The entries of a directory in the order the system returns them, "." and ".." included. An empty
/// path has the one entry "/". A directory that cannot be read to its end has the entries that
/// could be read. Throws IOException "opendir '%s' error %d", with EINTR when the program has to
/// stop.
std::vector<FileInfo> scanDirectory(const std::string& path);

}  // namespace corvane
