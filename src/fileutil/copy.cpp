#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

#include "fileutil/copy_file.h"
#include "fileutil/directory.h"
#include "fileutil/file_operations.h"
#include "fileutil/make_directory.h"
#include "fileutil/paths.h"
#include "fileutil/tree_walk.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

IOException copyIntoItselfError(const std::string& src, const std::string& dst) {
    return {format("cannot copy directory '%s' into itself as '%s'", src.c_str(), dst.c_str()),
            EINVAL};
}

FilePlace placeOf(const std::string& path) { return {AT_FDCWD, strconv::utf82acs(path), path}; }

// The file or directory itself, or its place in the directory that `dst` names.
std::string targetOf(const std::string& src, const std::string& dst) {
    return isDirectory(dst) ? correctDirectoryPath(dst) + getFileName(src) : dst;
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
        if (options_.isAllowed(name)) {
            copyFileToOrInto({src_.current(), name, srcPath_ + name},
                             {dst_.current(), name, dstPath_ + name});
        }
    }

    bool enter(const std::string& name) {
        if (!options_.recursive) {
            return false;
        }
        makeEntry(name);
        srcPath_ += name + SEPARATOR_DIR;
        dstPath_ += name + SEPARATOR_DIR;
        if (!src_.descend(name.c_str(), false)) {
            throw openDirectoryError(srcPath_, errno);
        }
        descendTarget(name);
        return true;
    }

    void leave(const std::string& name) {
        if (!src_.ascend()) {
            throw openDirectoryError(srcPath_, errno);
        }
        if (!dst_.ascend()) {
            throw openDirectoryError(dstPath_, errno);
        }
        srcPath_.resize(srcPath_.size() - name.size() - 1);
        dstPath_.resize(dstPath_.size() - name.size() - 1);
    }

  private:
    // A link in the target may lead back below the source, where the copy would never end.
    void descendTarget(const std::string& name) {
        if (dst_.descend(name.c_str(), false)) {
            return;
        }
        if (!dst_.descend(name.c_str(), true)) {
            throw openDirectoryError(dstPath_, errno);
        }
        if (liesWithin(dst_.current(), identityOf(src_.current()))) {
            throw copyIntoItselfError(srcPath_, dstPath_);
        }
    }

    void makeEntry(const std::string& name) {
        if (::mkdirat(dst_.current(), name.c_str(), newDirectoryMode) == 0) {
            return;
        }
        const int error = errno;
        struct stat info {};
        if (error != EEXIST || ::fstatat(dst_.current(), name.c_str(), &info, 0) != 0 ||
            !S_ISDIR(info.st_mode)) {
            throw makeDirectoryError(dstPath_ + name, error);
        }
    }

    DirectoryChain src_;
    DirectoryChain dst_;
    std::string srcPath_;
    std::string dstPath_;
    const CopyOptions& options_;
};

// Whether a copy of all that is below `from` would meet its own results there.
bool isBelow(int to, int from) {
    const DirectoryIdentity source = identityOf(from);
    return identityOf(to) != source && liesWithin(to, source);
}

// A target directory that cannot be opened makes the first entry fail that would go into it.
void failAtFirstEntry(int src, const std::string& srcDir, const std::string& dstDir,
                      const CopyOptions& options, int error) {
    for (const DirectoryEntry& entry : readEntries(src, srcDir)) {
        if (entry.directory && options.recursive) {
            throw makeDirectoryError(dstDir + entry.name, error);
        }
        if (!entry.directory && options.isAllowed(entry.name)) {
            throw IOException(format("open dst file '%s' error", (dstDir + entry.name).c_str()),
                              error);
        }
    }
}

}  // namespace

void copyFile(const std::string& src, const std::string& dst) {
    copyFileAt(placeOf(src), placeOf(targetOf(src, dst)), Target::File);
}

void copyDirectory(const std::string& src, const std::string& dst, const CopyOptions* options) {
    const CopyOptions all;
    const CopyOptions& chosen = options == nullptr ? all : *options;
    const std::string dstDir = correctDirectoryPath(dst);
    const std::string srcDir = correctDirectoryPath(src);
    FileDesc from = openDirectory(strconv::utf82acs(srcDir), DirectoryAccess::Read);
    if (from == -1) {
        throw openDirectoryError(srcDir, errno);
    }
    // With an empty target the names are relative to the current directory.
    FileDesc to = openDirectory(dstDir.empty() ? DIR_THIS : strconv::utf82acs(dstDir),
                                DirectoryAccess::Search);
    if (to == -1) {
        failAtFirstEntry(from, srcDir, dstDir, chosen, errno);
    } else if (chosen.recursive && isBelow(to, from)) {
        throw copyIntoItselfError(srcDir, dstDir);
    } else {
        TreeCopier copier(std::move(from), srcDir, std::move(to), dstDir, chosen);
        walkTree(copier);
    }
}

void renameFile(const std::string& src, const std::string& dst) {
    const std::string target = targetOf(src, dst);
    if (isDirectory(src)) {
        if (liesWithin(strconv::utf82acs(target), strconv::utf82acs(src))) {
            throw copyIntoItselfError(src, target);
        }
        makeDirectory(target);
        copyDirectory(src, target, nullptr);
        removeDirectory(src);
    } else if (copyFileAt(placeOf(src), placeOf(target), Target::RegularFile)) {
        removeFile(src);
    }
}

}  // namespace corvane
