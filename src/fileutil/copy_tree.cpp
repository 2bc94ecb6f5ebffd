#include <cerrno>
#include <utility>
#include <vector>

#include "fileutil/copy_file.h"
#include "fileutil/file_errors.h"
#include "fileutil/file_operations.h"
#include "fileutil/make_directory.h"
#include "fileutil/open_directory.h"
#include "fileutil/paths.h"
#include "fileutil/reach.h"
#include "fileutil/tree_walk.h"
#include "platform/waiting.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

// Whether a copy of all that is below `from` would meet its own results there.
bool isBelow(int to, int from) {
    const DirectoryIdentity source = identityOf(from);
    return identityOf(to) != source && liesWithin(to, source);
}

// Reaches the entries of a target directory by their paths where it cannot be opened: older systems
// want it to be readable for that, which nobody needs to write into it. One that cannot be used at
// all makes the first entry fail that would go into it.
void copyByPath(int src, const std::string& srcDir, const std::string& dstDir,
                const CopyOptions& options) {
    for (const DirectoryEntry& entry : readEntries(src, srcDir)) {
        const FilePlace target = placeOf(dstDir + entry.name);
        if (entry.directory && options.recursive) {
            makeDirectoryAt(target);
            copyDirectory(srcDir + entry.name, target.path, &options);
        } else if (!entry.directory && options.isAllowed(entry.name)) {
            copyFileToOrInto({src, entry.name, srcDir + entry.name}, target);
        }
    }
}

// Copies all that is below a directory into another one, in the order of the system.
class TreeCopier {
  public:
    TreeCopier(FileDesc src, std::string srcPath, FileDesc dst, std::string dstPath,
               const CopyOptions& options)
        : src_(std::move(src), DirectoryAccess::Read),
          dst_(std::move(dst), DirectoryAccess::Search),
          srcPath_(std::move(srcPath)),
          dstPath_(std::move(dstPath)),
          options_(options) {}

    std::vector<DirectoryEntry> entries() const { return readEntries(src_.current(), srcPath_); }

    void file(const std::string& name) {
        if (!options_.isAllowed(name)) {
            return;
        }
        if (interrupted()) {
            throw fileError("open src", srcPath_ + name, EINTR);
        }
        copyFileToOrInto({src_.current(), name, srcPath_ + name},
                         {dst_.current(), name, dstPath_ + name});
    }

    bool enter(const std::string& name) {
        if (!options_.recursive) {
            return false;
        }
        if (interrupted()) {
            throw makeDirectoryError(dstPath_ + name, EINTR);
        }
        makeDirectoryAt({dst_.current(), name, dstPath_ + name});
        srcPath_ += name + SEPARATOR_DIR;
        dstPath_ += name + SEPARATOR_DIR;
        if (!src_.descend(name.c_str(), false)) {
            throw openDirectoryError(srcPath_, errno);
        }
        if (descendTarget(name)) {
            return true;
        }
        copyByPath(src_.current(), srcPath_, dstPath_, options_);
        leaveSource(name);
        return false;
    }

    void leave(const std::string& name) {
        if (!dst_.ascend()) {
            throw openDirectoryError(dstPath_, errno);
        }
        leaveSource(name);
    }

  private:
    // Returns false when the directory is there, but cannot be opened for searching only. A link in
    // the target may lead back below the source, where the copy would never end.
    bool descendTarget(const std::string& name) {
        if (dst_.descend(name.c_str(), false)) {
            return true;
        }
        const bool isOpen = dst_.descend(name.c_str(), true);
        if (!isOpen && errno != EACCES) {
            throw openDirectoryError(dstPath_, errno);
        }
        if (isOpen ? isBelow(dst_.current(), src_.current()) : liesWithin(dstPath_, srcPath_)) {
            throw copyIntoItselfError(srcPath_, dstPath_);
        }
        return isOpen;
    }

    void leaveSource(const std::string& name) {
        if (!src_.ascend()) {
            throw openDirectoryError(srcPath_, errno);
        }
        srcPath_.resize(srcPath_.size() - name.size() - 1);
        dstPath_.resize(dstPath_.size() - name.size() - 1);
    }

    DirectoryChain src_;
    DirectoryChain dst_;
    std::string srcPath_;
    std::string dstPath_;
    const CopyOptions& options_;
};

}  // namespace

void copyDirectory(const std::string& src, const std::string& dst, const CopyOptions* options) {
    const CopyOptions all;
    const CopyOptions& chosen = options == nullptr ? all : *options;
    const std::string dstDir = correctDirectoryPath(dst);
    const std::string srcDir = correctDirectoryPath(src);
    FileDesc from = openDirectory(strconv::utf82acs(srcDir), DirectoryAccess::Read);
    if (from == -1) {
        throw openDirectoryError(srcDir, errno);
    }
    if (!isWithinReach(AT_FDCWD, strconv::utf82acs(dstDir))) {
        throw openDirectoryError(dstDir, EACCES);
    }
    // With an empty target the names are relative to the current directory.
    FileDesc to = openDirectory(dstDir.empty() ? DIR_THIS : strconv::utf82acs(dstDir),
                                DirectoryAccess::Search);
    const bool isHidden = to == -1 && errno == EACCES;
    if (chosen.recursive &&
        (isHidden ? liesWithin(dstDir, srcDir) : to != -1 && isBelow(to, from))) {
        throw copyIntoItselfError(srcDir, dstDir);
    }
    if (to == -1) {
        copyByPath(from, srcDir, dstDir, chosen);
    } else {
        TreeCopier copier(std::move(from), srcDir, std::move(to), dstDir, chosen);
        walkTree(copier);
    }
}

}  // namespace corvane
