// Directories that cannot be opened, or of which the system cannot tell all entries. Linux only:
// elsewhere the C library's function cannot be replaced by name.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>

#include "fileutil/file_errors.h"
#include "fileutil/file_info.h"
#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/thrown.h"
#include "support/tree.h"

namespace corvane {
namespace {

/// A directory that cannot be opened, as on a system that wants it to be readable for that.
std::string closedDirectory;
int closedWith = EACCES;

/// The same for all directories of this name that are reached from another one.
std::string closedName;

/// The entries that the next directories show before an error; negative for all.
int entriesLeft = -1;

/// Whether an entry tells what it is, as on most file systems.
bool tellsKinds = true;

}  // namespace
}  // namespace corvane

// These take the place of the C library's functions in this program.
extern "C" int open(const char* path, int flags, ...) {
    static const auto next = reinterpret_cast<decltype(&open)>(::dlsym(RTLD_NEXT, "open"));
    if (!corvane::closedDirectory.empty() && path == corvane::closedDirectory) {
        errno = corvane::closedWith;
        return -1;
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return next(path, flags, mode);
}

extern "C" int openat(int directory, const char* path, int flags, ...) {
    static const auto next = reinterpret_cast<decltype(&openat)>(::dlsym(RTLD_NEXT, "openat"));
    if ((flags & O_PATH) != 0 && !corvane::closedName.empty() && path == corvane::closedName) {
        errno = EACCES;
        return -1;
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return next(directory, path, flags, mode);
}

// The same calls of the code below, whose functions are fortified (feature_test_macros(7)).
extern "C" int __open_2(const char* path, int flags) { return open(path, flags); }
extern "C" int __openat_2(int directory, const char* path, int flags) {
    return openat(directory, path, flags);
}

extern "C" dirent* readdir(DIR* directory) {
    static const auto next = reinterpret_cast<decltype(&readdir)>(::dlsym(RTLD_NEXT, "readdir"));
    if (corvane::entriesLeft == 0) {
        errno = EIO;
        return nullptr;
    }
    if (corvane::entriesLeft > 0) {
        --corvane::entriesLeft;
    }
    dirent* const entry = next(directory);
    if (entry != nullptr && !corvane::tellsKinds) {
        entry->d_type = DT_UNKNOWN;
    }
    return entry;
}

namespace corvane {
namespace {

class UnreadableRest : public test::FilesTest {
  protected:
    UnreadableRest() {
        scratch.file("d/a");
        scratch.file("d/b");
        scratch.directory("dst");
    }
    ~UnreadableRest() override { entriesLeft = -1; }

    template <typename Work>
    std::string thrownAfter(int entries, Work work) {
        entriesLeft = entries;
        std::string message = test::thrownBy<IOException>(work);
        entriesLeft = -1;
        return message;
    }
};

TEST_F(UnreadableRest, IsLeftOutOfAListing) {
    for (int entries = 0; entries < 4; ++entries) {
        EXPECT_EQ(thrownAfter(entries,
                              [&] {
                                  EXPECT_EQ(scanDirectory(scratch / "d").size(),
                                            static_cast<std::size_t>(entries));
                              }),
                  "nothing was thrown");
    }
}

TEST_F(UnreadableRest, EndsACopyAndARemoval) {
    const std::string message = test::withCode("readdir error", EIO);
    EXPECT_EQ(thrownAfter(3, [&] { copyDirectory(scratch / "d", scratch / "dst", nullptr); }),
              message);
    EXPECT_EQ(thrownAfter(3, [&] { removeDirectory(scratch / "d", true); }), message);
    EXPECT_TRUE(std::filesystem::exists(scratch / "d/a"));
    EXPECT_TRUE(std::filesystem::exists(scratch / "d/b"));
}

// The root is not removed; where it cannot be told from others, nothing is.
TEST(UnknownRoot, LetsNoDirectoryBeRemoved) {
    test::ScratchDirectory scratch;
    scratch.file("d/a");
    closedDirectory = "/";
    closedWith = ENFILE;
    EXPECT_EQ(test::thrownBy<IOException>([&] { removeDirectory(scratch / "d", true); }),
              test::thrownBy<IOException>(
                  [&] { throw removeDirectoryError((scratch / "d") + "/", ENFILE); }));
    closedDirectory.clear();
    closedWith = EACCES;
    EXPECT_TRUE(std::filesystem::exists(scratch / "d/a"));
}

class ClosedDirectory : public testing::Test {
  protected:
    ClosedDirectory() { closedDirectory = scratch.directory("dst") + "/"; }
    ~ClosedDirectory() override {
        closedName.clear();
        closedDirectory.clear();
        closedWith = EACCES;
    }

    test::ScratchDirectory scratch;
};

TEST_F(ClosedDirectory, IsCopiedIntoByThePathsOfItsEntries) {
    scratch.file("src/a", "1");
    scratch.file("src/sub/deep/b", "2");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(test::treeAt(scratch / "dst"), test::treeAt(scratch / "src"));
}

TEST_F(ClosedDirectory, IsCopiedIntoFurtherDownAsWell) {
    closedDirectory.clear();
    closedName = "closed";
    scratch.file("src/a/closed/b", "1");
    scratch.file("src/a/closed/deep/closed/c", "2");
    scratch.file("src/a/d", "3");
    scratch.file("src/e", "4");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(test::treeAt(scratch / "dst"), test::treeAt(scratch / "src"));
}

TEST_F(ClosedDirectory, TakesWhatIsMovedThere) {
    for (const int error : {EACCES, EPERM}) {
        closedWith = error;
        const std::string src = scratch.file("src", "data");
        EXPECT_EQ(test::thrownBy([&] { renameFile(src, scratch / "dst/new"); }),
                  "nothing was thrown");
        EXPECT_FALSE(std::filesystem::exists(src)) << error;
    }
    EXPECT_EQ(test::treeAt(scratch / "dst"), (test::Tree{{"new", "file:data"}}));
}

TEST_F(ClosedDirectory, LosesNothingThatCannotBeBroughtToTheDiskThere) {
    closedWith = ENFILE;
    const std::string src = scratch.file("src", "data");
    EXPECT_EQ(test::thrownBy<IOException>([&] { renameFile(src, scratch / "dst/new"); }),
              test::withCode("write dst file '" + (scratch / "dst/new") + "' error", ENFILE));
    EXPECT_EQ(test::readFile(src), "data");
    EXPECT_TRUE(std::filesystem::is_empty(scratch / "dst"));
}

TEST_F(ClosedDirectory, IsNotCopiedIntoFromAbove) {
    EXPECT_EQ(test::thrownBy([&] { copyDirectory(scratch.path(), scratch / "dst", nullptr); }),
              "cannot copy directory '" + scratch.path() + "' into itself as '" +
                  (scratch / "dst/") + "' (22)");
    EXPECT_TRUE(std::filesystem::is_empty(scratch / "dst"));
}

TEST_F(ClosedDirectory, IsNotCopiedIntoWhereALinkLeadsBackBelowTheSource) {
    closedDirectory.clear();
    closedName = "closed";
    scratch.file("src/closed/b/c", "1");
    std::filesystem::create_directory_symlink("../src/closed/b", scratch / "dst/closed");
    EXPECT_EQ(test::thrownBy([&] { copyDirectory(scratch / "src", scratch / "dst", nullptr); }),
              "cannot copy directory '" + (scratch / "src/closed/") + "' into itself as '" +
                  (scratch / "dst/closed/") + "' (22)");
    EXPECT_EQ(test::treeAt(scratch / "src/closed/b"), (test::Tree{{"c", "file:1"}}));
}

TEST(EntriesOfUnknownKind, AreDirectoriesButNotTheLinksToSome) {
    const test::ScratchDirectory scratch;
    scratch.file("target/kept");
    scratch.file("d/directory/file");
    std::filesystem::create_directory_symlink("../target", scratch / "d/link");
    tellsKinds = false;
    std::string directories;
    for (const FileInfo& entry : scanDirectory(scratch / "d")) {
        directories += entry.type == 1 && entry.name.front() != '.' ? entry.name : "";
    }
    removeDirectory(scratch / "d", true);
    tellsKinds = true;
    EXPECT_EQ(directories, "directory");
    EXPECT_FALSE(std::filesystem::exists(scratch / "d"));
    EXPECT_TRUE(std::filesystem::exists(scratch / "target/kept"));
}

}  // namespace
}  // namespace corvane
