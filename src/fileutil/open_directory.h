// Open directories: reading the entries of one, and walking down and up a tree one name at a time,
// so that trees of any depth are copied and removed without ever needing a long path.
#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/file_desc.h"

namespace corvane {

/// What is asked of an open directory.
enum class DirectoryAccess {
    Read,    ///< list its entries
    Search,  ///< reach its entries by name; needs no read permission
};

/// Opens a directory by its path in the file system's character set, following a symbolic link.
/// -1 with errno when it cannot be opened.
FileDesc openDirectory(const std::string& path, DirectoryAccess access);

/// Which directory an open descriptor stands for.
struct DirectoryIdentity {
    dev_t device;
    ino_t inode;

    bool operator==(const DirectoryIdentity&) const = default;
};
DirectoryIdentity identityOf(int directory);

/// Whether the open directory `here` is the one of that identity or lies below it.
bool liesWithin(int here, const DirectoryIdentity& directory);
/// The same for paths; `path` need not exist, and an empty one is the current directory.
bool liesWithin(const std::string& path, const std::string& directory);

/// Reads the entries of a directory in the order of the system.
class DirectoryReader {
  public:
    /// Takes over an open directory; isOpen() is false (with errno) when it cannot be read.
    explicit DirectoryReader(FileDesc directory);

    bool isOpen() const { return stream_ != nullptr; }
    int descriptor() const { return ::dirfd(stream_.get()); }

    /// The next entry, "." and ".." included. Null with errno 0 at the end, null with another errno
    /// when the system cannot tell what follows: EINTR when the program has to stop.
    const dirent* next();

    /// Whether bit 2 (value 4) of the entry's type byte is set: so for directories, and also for
    /// sockets and block devices. A type that the file system does not tell is looked up.
    bool isDirectoryEntry(const dirent& entry) const;

  private:
    struct Close {
        void operator()(DIR* stream) const { ::closedir(stream); }
    };
    std::unique_ptr<DIR, Close> stream_;
    unsigned count_ = 0;
};

/// An entry by the name that the file system knows it under.
struct DirectoryEntry {
    std::string name;
    bool directory;
};

/// All entries of an open directory but "." and "..". The descriptor stays open. Throws
/// openDirectoryError() for `path`, and IOException when not all entries can be told.
std::vector<DirectoryEntry> readEntries(int directory, const std::string& path);

/// The open directories from the root of a tree down to the current one. Deep down only the upper
/// ones and the current one stay open; the others are found again through "..".
class DirectoryChain {
  public:
    DirectoryChain(FileDesc root, DirectoryAccess access);

    int current() const { return levels_.back().directory; }

    /// Goes into a subdirectory. Returns false with errno when it cannot be opened, or when it is a
    /// symbolic link and `followLink` is false.
    bool descend(const char* name, bool followLink);

    /// Goes back to the parent. Returns false with errno when it cannot be opened any more, or is
    /// another directory than before (ENOENT).
    bool ascend();

  private:
    struct Level {
        FileDesc directory;
        DirectoryIdentity identity;
    };

    std::vector<Level> levels_;
    int openFlags_;
};

}  // namespace corvane
