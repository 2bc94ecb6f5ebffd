#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>

#include "fileutil/file_info.h"
#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/resource_limit.h"
#include "support/thrown.h"
#include "support/tree.h"
#include "support/unix_socket.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;
using test::Tree;
using test::treeAt;
using test::withCode;

class CopyDirectory : public test::TreeCopyTest {};

TEST_F(CopyDirectory, PutsTheContentsIntoTheTarget) {
    scratch.file("src/a.txt", "1");
    scratch.file("src/.hidden", "2");
    scratch.file("src/sub/deep/b", "3");
    scratch.directory("src/empty");
    scratch.file("dst/kept", "4");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"a.txt", "file:1"},
                                             {".hidden", "file:2"},
                                             {"sub", "directory"},
                                             {"sub/deep", "directory"},
                                             {"sub/deep/b", "file:3"},
                                             {"empty", "directory"},
                                             {"kept", "file:4"}}));
}

TEST_F(CopyDirectory, MergesIntoDirectoriesThatExist) {
    scratch.file("src/sub/a", "new");
    scratch.file("src/sub/b", "b");
    scratch.file("dst/sub/a", "old one");
    scratch.file("dst/sub/c", "c");
    copyDirectory(scratch / "src/", scratch / "dst\\", nullptr);
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"sub", "directory"},
                                             {"sub/a", "file:new one"},
                                             {"sub/b", "file:b"},
                                             {"sub/c", "file:c"}}));
}

TEST_F(CopyDirectory, StaysOnTheFirstLevelWhenNotRecursive) {
    scratch.file("src/a", "1");
    scratch.file("src/sub/b", "2");
    scratch.directory("dst");
    CopyOptions options;
    options.recursive = false;
    copyDirectory(scratch / "src", scratch / "dst", &options);
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"a", "file:1"}}));
}

TEST_F(CopyDirectory, FiltersFilesButNotDirectories) {
    for (const char* name : {"a.swf", "b.jpg", "c.txt", "d", "sub.txt/e.swf", "sub.txt/f.SWF"}) {
        scratch.file(std::string("src/") + name, "x");
    }
    scratch.directory("dst");
    CopyOptions options;
    options.addExts(true, "swf,jpg");
    options.addExts(false, "jpg");
    copyDirectory(scratch / "src", scratch / "dst", &options);
    EXPECT_EQ(treeAt(scratch / "dst"),
              (Tree{{"a.swf", "file:x"}, {"sub.txt", "directory"}, {"sub.txt/e.swf", "file:x"}}));
}

TEST_F(CopyDirectory, PutsAFileIntoADirectoryOfItsName) {
    scratch.file("src/x", "1");
    scratch.directory("dst/x");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"x", "directory"}, {"x/x", "file:1"}}));
}

TEST_F(CopyDirectory, StopsWhereAFileIsInTheWayOfADirectory) {
    scratch.directory("src/x");
    scratch.file("dst/x", "1");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              "makeDirectory '" + (scratch / "dst/x") + "' error (17)");
}

TEST_F(CopyDirectory, DoesNotCreateTheTargetItself) {
    scratch.file("src/a", "1");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              "open dst file '" + (scratch / "dst/a") + "' error (2)");
    scratch.directory("tree/sub");
    EXPECT_EQ(copying(scratch / "tree", scratch / "dst"),
              "makeDirectory '" + (scratch / "dst/sub") + "' error (2)");
    EXPECT_EQ(copying(scratch.directory("empty"), scratch / "dst"), "nothing was thrown");
    EXPECT_FALSE(fs::exists(scratch / "dst"));
}

TEST_F(CopyDirectory, OpensTheSourceFirst) {
    scratch.directory("src");
    fs::create_symlink("missing", scratch / "src/a");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              "open src file '" + (scratch / "src/a") + "' error (2)");
}

TEST_F(CopyDirectory, FailsWhenTheTargetIsAFile) {
    scratch.file("src/a", "1");
    scratch.file("dst", "kept");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              "open dst file '" + (scratch / "dst/a") + "' error (20)");
    EXPECT_EQ(test::readFile(scratch / "dst"), "kept");
}

TEST_F(CopyDirectory, SaysThatTheSourceCannotBeOpened) {
    EXPECT_EQ(copying(scratch / "src", scratch.path()),
              "opendir '" + (scratch / "src/") + "' error 2 (2)");
    EXPECT_EQ(copying("", scratch.path()), "opendir '' error 2 (2)");
}

TEST_F(CopyDirectory, TakesAnEmptyTargetForTheCurrentDirectory) {
    scratch.file("src/a", "1");
    const test::WorkingDirectory inside(scratch.directory("here"));
    copyDirectory(scratch / "src", "", nullptr);
    EXPECT_EQ(treeAt("."), (Tree{{"a", "file:1"}}));
    EXPECT_EQ(copying("..", ""), "cannot copy directory '../' into itself as '' (22)");
}

TEST_F(CopyDirectory, StopsAtPipesAndSocketsWithoutWaiting) {
    scratch.directory("dst");
    const test::WorkingDirectory inside(scratch.path());
    scratch.directory("pipes");
    ASSERT_EQ(::mkfifo("pipes/pipe", 0600), 0);
    EXPECT_EQ(copying("pipes", "dst"), "open src file 'pipes/pipe' error (22)");
    scratch.directory("sockets");
    const FileDesc sock = test::unixSocketAt("sockets/socket");
    EXPECT_EQ(copying("sockets", "dst"), "opendir 'sockets/socket/' error 20 (20)");
}

TEST_F(CopyDirectory, KeepsWhatWasCopiedBeforeAFailure) {
    scratch.file("src/sub/a", "1");
    scratch.file("src/sub/b", std::string(2000, 'x'));
    scratch.directory("dst");
    {
        const test::FileSizeLimit full(1000);
        EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
                  withCode("write dst file '" + (scratch / "dst/sub/b") + "' error", EFBIG));
    }
    EXPECT_TRUE(fs::exists(scratch / "dst/sub"));
    EXPECT_FALSE(fs::exists(scratch / "dst/sub/b"));
}

TEST_F(CopyDirectory, CopiesNamesOfAnyBytes) {
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') {
            const std::string character(1, static_cast<char>(byte));
            scratch.file("src/" + character + "d/" + character + "f" + character, character);
        }
    }
    scratch.directory("dst");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(treeAt(scratch / "dst"), treeAt(scratch / "src"));
    EXPECT_EQ(treeAt(scratch / "dst").size(), 2U * 254U);
}

// Running out of descriptors in the middle of a tree must never look like an empty directory.
TEST_F(CopyDirectory, FailsWithoutDescriptorsAndSucceedsLater) {
    scratch.file("src/a/b/c/d/e/file", "1");
    scratch.directory("dst");
    for (int free = 0;; ++free) {
        const int next = test::nextDescriptor();
        try {
            const test::DescriptorLimit descriptors(next + free);
            copyDirectory(scratch / "src", scratch / "dst", nullptr);
            break;
        } catch (const IOException& e) {
            EXPECT_EQ(e.code, EMFILE) << e.what();
        }
        ASSERT_LT(free, 64);
    }
    EXPECT_EQ(treeAt(scratch / "dst"), treeAt(scratch / "src"));
}

// The last name that begins with `prefix` and comes after one that begins with "sub". Which entry
// comes after which is for the file system to say.
std::string nameBehindASubdirectory(const std::string& directory, std::string_view prefix) {
    std::string behind;
    bool wasDirectory = false;
    for (const FileInfo& entry : scanDirectory(directory)) {
        wasDirectory = wasDirectory || entry.name.starts_with("sub");
        behind = wasDirectory && entry.name.starts_with(prefix) ? entry.name : behind;
    }
    return behind;
}

TEST_F(CopyDirectory, NamesTheFileThatCannotBeReadBehindASubdirectory) {
    for (const char digit : std::string("0123456789")) {
        scratch.file(std::string("targets/") + digit);
        scratch.directory(std::string("src/sub") + digit);
        fs::create_symlink(std::string("../targets/") + digit, scratch / "src/link" + digit);
    }
    const std::string behind = nameBehindASubdirectory(scratch / "src", "link");
    ASSERT_NE(behind, "");
    removeFile(scratch / "targets" + "/" + behind.back());
    scratch.directory("dst");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              withCode("open src file '" + (scratch / "src/") + behind + "' error", ENOENT));
}

TEST_F(CopyDirectory, NamesTheFileThatCannotBeWrittenBehindASubdirectory) {
    for (const char digit : std::string("0123456789")) {
        scratch.file(std::string("src/file") + digit);
        scratch.directory(std::string("src/sub") + digit);
    }
    const std::string behind = nameBehindASubdirectory(scratch / "src", "file");
    ASSERT_NE(behind, "");
    const std::string blocked = scratch.directory("dst/" + behind + "/" + behind);
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              withCode("open dst file '" + blocked + "' error", EISDIR));
}

}  // namespace
}  // namespace corvane
