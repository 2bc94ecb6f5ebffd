#include "fileutil/open_directory.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

#include "fileutil/file_errors.h"
#include "fileutil/paths.h"
#include "platform/system.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

constexpr unsigned directoryBit = 4;

// The entries that are read between two looks at the signals.
constexpr unsigned betweenSignals = 1024;

// Levels of a tree whose directories all stay open, of the two trees of a copy each.
constexpr std::size_t openLevels = 48;

int openFlags(DirectoryAccess access) {
    const int how = access == DirectoryAccess::Read ? O_RDONLY : platform::searchFlag();
    return how | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;
}

// The directory at `path`, or the nearest one above it that exists.
FileDesc openNearest(std::string path) {
    while (true) {
        FileDesc directory = openDirectory(path.empty() ? DIR_THIS : path, DirectoryAccess::Search);
        if (directory != -1 || path.empty()) {
            return directory;
        }
        path = unslashPath(path);
        path.erase(path.rfind(SEPARATOR_DIR) + 1);  // npos + 1 is 0: the current directory
    }
}

}  // namespace

FileDesc openDirectory(const std::string& path, DirectoryAccess access) {
    return FileDesc(::open(path.c_str(), openFlags(access)));
}

DirectoryIdentity identityOf(int directory) {
    struct stat info {};
    ::fstat(directory, &info);
    return {info.st_dev, info.st_ino};
}

bool liesWithin(int here, const DirectoryIdentity& directory) {
    FileDesc parent;
    while (here != -1) {
        const DirectoryIdentity found = identityOf(here);
        if (found == directory) {
            return true;
        }
        parent = FileDesc(::openat(here, DIR_PARENT, openFlags(DirectoryAccess::Search)));
        if (parent != -1 && identityOf(parent) == found) {
            return false;  // the root is its own parent
        }
        here = parent;
    }
    return false;
}

bool liesWithin(const std::string& path, const std::string& directory) {
    const FileDesc top = openDirectory(directory, DirectoryAccess::Search);
    return top != -1 && liesWithin(openNearest(path), identityOf(top));
}

DirectoryReader::DirectoryReader(FileDesc directory) {
    if (directory != -1) {
        stream_.reset(::fdopendir(directory));
        if (stream_ != nullptr) {
            static_cast<void>(directory.release());
        }
    }
}

const dirent* DirectoryReader::next() {
    if (count_++ % betweenSignals == betweenSignals - 1 && interrupted()) {
        return nullptr;
    }
    errno = 0;
    return ::readdir(stream_.get());
}

bool DirectoryReader::isDirectoryEntry(const dirent& entry) const {
    if (entry.d_type == DT_UNKNOWN) {
        struct stat info {};
        return ::fstatat(descriptor(), entry.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISDIR(info.st_mode);
    }
    return (entry.d_type & directoryBit) != 0;
}

std::vector<DirectoryEntry> readEntries(int directory, const std::string& path) {
    std::vector<DirectoryEntry> entries;
    DirectoryReader reader(FileDesc(::fcntl(directory, F_DUPFD_CLOEXEC, 0)));
    if (!reader.isOpen()) {
        throw openDirectoryError(path, errno);
    }
    while (const dirent* entry = reader.next()) {
        if (std::strcmp(entry->d_name, DIR_THIS) != 0 &&
            std::strcmp(entry->d_name, DIR_PARENT) != 0) {
            entries.push_back({entry->d_name, reader.isDirectoryEntry(*entry)});
        }
    }
    if (errno != 0) {  // what follows may be missing, not absent
        throw IOException("readdir error", errno);
    }
    return entries;
}

DirectoryChain::DirectoryChain(FileDesc root, DirectoryAccess access)
    : openFlags_(openFlags(access)) {
    const DirectoryIdentity identity = identityOf(root);
    levels_.push_back({std::move(root), identity});
}

bool DirectoryChain::descend(const char* name, bool followLink) {
    FileDesc child(::openat(current(), name, openFlags_ | (followLink ? 0 : O_NOFOLLOW)));
    if (child == -1) {
        return false;
    }
    if (levels_.size() > openLevels) {
        levels_.back().directory.close();
    }
    const DirectoryIdentity identity = identityOf(child);
    levels_.push_back({std::move(child), identity});
    return true;
}

bool DirectoryChain::ascend() {
    const FileDesc child = std::move(levels_.back().directory);
    levels_.pop_back();
    Level& parent = levels_.back();
    if (parent.directory != -1) {
        return true;
    }
    parent.directory = FileDesc(::openat(child, DIR_PARENT, openFlags_));
    if (parent.directory != -1 && !(identityOf(parent.directory) == parent.identity)) {
        parent.directory.close();
        errno = ENOENT;
    }
    return parent.directory != -1;
}

}  // namespace corvane
