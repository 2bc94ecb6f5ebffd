#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

#include "fileutil/file_errors.h"
#include "fileutil/file_operations.h"
#include "fileutil/open_directory.h"
#include "fileutil/paths.h"
#include "fileutil/reach.h"
#include "fileutil/tree_walk.h"
#include "platform/waiting.h"
#include "text/strconv.h"

namespace corvane {
namespace {

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

    std::vector<DirectoryEntry> entries() const { return readEntries(chain_.current(), path_); }

    void file(const std::string& name) {
        if (interrupted() ||
            (::unlinkat(chain_.current(), name.c_str(), 0) != 0 && errno != ENOENT)) {
            const int error = errno;
            throw fileError("remove", path_ + name, error);
        }
    }

    bool enter(const std::string& name) {
        path_ += name + SEPARATOR_DIR;
        if (interrupted() || !chain_.descend(name.c_str(), false)) {
            throw openDirectoryError(path_, errno);
        }
        return true;
    }

    // Removes the directory that was emptied, from its parent.
    void leave(const std::string& name) {
        if (!chain_.ascend()) {
            throw openDirectoryError(path_, errno);
        }
        if (::unlinkat(chain_.current(), name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
            throw removeDirectoryError(path_, errno);
        }
        path_.resize(path_.size() - name.size() - 1);
    }

  private:
    DirectoryChain chain_;
    std::string path_;
};

void emptyDirectory(const std::string& dir) {
    FileDesc root = openDirectory(strconv::utf82acs(dir), DirectoryAccess::Read);
    if (root == -1) {
        throw openDirectoryError(dir, errno);
    }
    const FileDesc rootOfAll = openDirectory("/", DirectoryAccess::Search);
    if (rootOfAll == -1) {
        throw removeDirectoryError(dir, errno);
    }
    if (identityOf(root) == identityOf(rootOfAll)) {
        throw removeDirectoryError(dir, EBUSY);
    }
    TreeRemover remover(std::move(root), dir);
    walkTree(remover);
}

}  // namespace

void removeFile(const std::string& path) {
    if (!isEntryWithinReach(path)) {
        throw fileError("remove", path, EACCES);
    }
    if (std::remove(strconv::utf82acs(path).c_str()) != 0 && errno != ENOENT) {
        throw fileError("remove", path, errno);
    }
}

void removeDirectory(const std::string& path) {
    if (::rmdir(strconv::utf82acs(path).c_str()) != 0 && errno != ENOENT) {
        throw removeDirectoryError(path, errno);
    }
}

void removeDirectory(const std::string& path, bool recursive) {
    const std::string dir = correctDirectoryPath(path);
    if (!isEntryWithinReach(dir)) {  // or a listed folder would be emptied before it cannot go
        throw removeDirectoryError(dir, EACCES);
    }
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
