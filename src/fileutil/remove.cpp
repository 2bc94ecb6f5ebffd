#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

#include "fileutil/directory.h"
#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

IOException removeFileError(const std::string& path, int error) {
    return {format("remove file '%s' error", path.c_str()), error};
}

IOException removeDirectoryError(const std::string& path, int error) {
    return {format("remove directory '%s' error", path.c_str()), error};
}

// Without the separators at its end, which would make the system follow a link.
std::string bare(const std::string& path) {
    return path.substr(0, path.find_last_not_of(SEPARATOR_DIR) + 1);
}

bool isLink(const std::string& path) {
    struct stat info {};
    return ::lstat(strconv::utf82acs(path).c_str(), &info) == 0 && S_ISLNK(info.st_mode);
}

// Removes all that is below a directory, depth first, in the order of the system.
class TreeRemover {
  public:
    TreeRemover(FileDesc root, std::string path)
        : chain_(std::move(root), DirectoryAccess::Read), path_(std::move(path)) {}

    void run() {
        levels_.push_back({readEntries(chain_.current(), path_), 0, path_.size()});
        while (true) {
            Level& level = levels_.back();
            if (level.next == level.entries.size()) {
                levels_.pop_back();
                if (levels_.empty()) {
                    return;
                }
                leave();
                continue;
            }
            const DirectoryEntry& entry = level.entries[level.next++];
            if (entry.directory) {
                enter(entry.name);
            } else {
                removeEntry(entry.name);
            }
        }
    }

  private:
    struct Level {
        std::vector<DirectoryEntry> entries;
        std::size_t next;
        std::size_t pathLength;
    };

    void enter(const std::string& name) {
        path_ += name + SEPARATOR_DIR;
        if (!chain_.descend(name.c_str(), false)) {
            throw openDirectoryError(path_, errno);
        }
        levels_.push_back({readEntries(chain_.current(), path_), 0, path_.size()});
    }

    // Removes the directory that was emptied, from its parent.
    void leave() {
        if (!chain_.ascend()) {
            throw openDirectoryError(path_, errno);
        }
        const Level& parent = levels_.back();
        const std::string& name = parent.entries[parent.next - 1].name;
        if (::unlinkat(chain_.current(), name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
            throw removeDirectoryError(path_, errno);
        }
        path_.resize(parent.pathLength);
    }

    void removeEntry(const std::string& name) {
        if (::unlinkat(chain_.current(), name.c_str(), 0) != 0 && errno != ENOENT) {
            throw removeFileError(path_ + name, errno);
        }
    }

    DirectoryChain chain_;
    std::string path_;
    std::vector<Level> levels_;
};

void emptyDirectory(const std::string& dir) {
    FileDesc root = openDirectory(strconv::utf82acs(dir), DirectoryAccess::Read);
    if (root == -1) {
        throw openDirectoryError(dir, errno);
    }
    const FileDesc rootOfAll = openDirectory("/", DirectoryAccess::Search);
    if (identityOf(root) == identityOf(rootOfAll)) {
        throw removeDirectoryError(dir, EBUSY);
    }
    TreeRemover(std::move(root), dir).run();
}

}  // namespace

void removeFile(const std::string& path) {
    if (std::remove(strconv::utf82acs(path).c_str()) != 0 && errno != ENOENT) {
        throw removeFileError(path, errno);
    }
}

void removeDirectory(const std::string& path) {
    if (::rmdir(strconv::utf82acs(path).c_str()) != 0 && errno != ENOENT) {
        throw removeDirectoryError(path, errno);
    }
}

void removeDirectory(const std::string& path, bool recursive) {
    const std::string dir = correctDirectoryPath(path);
    if (recursive && isLink(bare(dir))) {
        removeFile(bare(dir));
        return;
    }
    if (recursive && !dir.empty()) {
        emptyDirectory(dir);
    }
    removeDirectory(dir);
}

}  // namespace corvane
