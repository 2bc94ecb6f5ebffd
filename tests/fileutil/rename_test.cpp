#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/resource_limit.h"
#include "support/thrown.h"
#include "support/tree.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;
using test::Tree;
using test::treeAt;
using test::withCode;

class RenameFile : public test::FilesTest {
  protected:
    std::string renaming(const std::string& src, const std::string& dst) {
        return thrownBy<IOException>([&] { renameFile(src, dst); });
    }
};

TEST_F(RenameFile, MovesAFile) {
    const std::string src = scratch.file("src", "x");
    renameFile(src, scratch / "dst");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"dst", "file:x"}}));
}

TEST_F(RenameFile, MovesAFileIntoADirectory) {
    const std::string src = scratch.file("src", "x");
    scratch.directory("d");
    renameFile(src, scratch / "d");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"d", "directory"}, {"d/src", "file:x"}}));
}

TEST_F(RenameFile, MovesAFileIntoTheDirectoryOfItsNameInADirectory) {
    const std::string src = scratch.file("x", "1");
    scratch.directory("d/x");
    renameFile(src, scratch / "d");
    EXPECT_EQ(treeAt(scratch.path()),
              (Tree{{"d", "directory"}, {"d/x", "directory"}, {"d/x/x", "file:1"}}));
    EXPECT_EQ(renaming(scratch / "d/x/x", scratch / "d"), "nothing was thrown");
    EXPECT_EQ(test::readFile(scratch / "d/x/x"), "1");
}

TEST_F(RenameFile, KeepsTheTailOfALongerTarget) {
    scratch.file("src", "new");
    scratch.file("dst", "longer");
    renameFile(scratch / "src", scratch / "dst");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"dst", "file:newger"}}));
}

TEST_F(RenameFile, LeavesAFileThatIsMovedOntoItself) {
    const std::string src = scratch.file("d/src", "kept");
    fs::create_hard_link(src, scratch / "d/hard");
    fs::create_symlink("src", scratch / "d/soft");
    fs::create_directory_symlink("d", scratch / "link");
    const Tree before = treeAt(scratch.path());
    const test::WorkingDirectory inside(scratch.path());
    for (const std::string& dst :
         {src, std::string("d/src"), std::string("d/./src"), std::string("d/../d//src"),
          std::string("link/src"), std::string("d"), std::string("d/"), std::string("link"),
          scratch / "d", std::string("d/hard"), std::string("d/soft")}) {
        EXPECT_EQ(renaming(src, dst), "nothing was thrown") << dst;
        EXPECT_EQ(treeAt(scratch.path()), before) << dst;
    }
}

TEST_F(RenameFile, LeavesALinkThatIsMovedOntoItsTarget) {
    scratch.file("src", "kept");
    fs::create_symlink("src", scratch / "soft");
    EXPECT_EQ(renaming(scratch / "soft", scratch / "src"), "nothing was thrown");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:kept"}, {"soft", "link:src"}}));
}

TEST_F(RenameFile, MakesAFileOfALinkElsewhere) {
    scratch.file("src", "x");
    fs::create_symlink("src", scratch / "soft");
    renameFile(scratch / "soft", scratch / "dst");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:x"}, {"dst", "file:x"}}));
}

TEST_F(RenameFile, MovesAnEmptyDirectory) {
    scratch.directory("src");
    renameFile(scratch / "src", scratch / "dst");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"dst", "directory"}}));
}

TEST_F(RenameFile, MovesAnEmptyDirectoryIntoAnother) {
    scratch.directory("src");
    scratch.directory("dst");
    renameFile(scratch / "src", scratch / "dst");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"dst", "directory"}, {"dst/src", "directory"}}));
}

TEST_F(RenameFile, CopiesADirectoryWithContentsAndKeepsTheSource) {
    scratch.file("src/a", "1");
    scratch.file("src/sub/b", "2");
    EXPECT_EQ(renaming(scratch / "src", scratch / "dst"),
              withCode("remove directory '" + (scratch / "src") + "' error", ENOTEMPTY));
    EXPECT_EQ(treeAt(scratch / "src"), treeAt(scratch / "dst"));
    EXPECT_EQ(test::readFile(scratch / "src/sub/b"), "2");
}

TEST_F(RenameFile, RefusesToMoveADirectoryIntoItself) {
    scratch.directory("src/sub");
    fs::create_directory_symlink("src", scratch / "link");
    const Tree before = treeAt(scratch.path());
    const std::string src = scratch / "src";
    for (const std::string& dst : {src, scratch / "src/sub", scratch / "src/new", scratch / "link",
                                   scratch / "link/sub", scratch / "link/new"}) {
        const std::string target = fs::is_directory(dst) ? dst + "/src" : dst;
        EXPECT_EQ(renaming(src, dst),
                  "cannot copy directory '" + src + "' into itself as '" + target + "' (22)");
        EXPECT_EQ(treeAt(scratch.path()), before) << dst;
    }
}

TEST_F(RenameFile, RefusesToMoveADirectoryToWhereItAlreadyLies) {
    scratch.directory("d/src");
    const std::string src = scratch / "d/src";
    EXPECT_EQ(renaming(src, scratch / "d"),
              "cannot copy directory '" + src + "' into itself as '" + src + "' (22)");
    EXPECT_TRUE(fs::is_directory(src));
}

TEST_F(RenameFile, KeepsTheSourceWhenTheCopyFails) {
    const std::string src = scratch.file("src", std::string(100'000, 'x'));
    EXPECT_EQ(renaming(src, scratch / "no/dst"),
              "open dst file '" + (scratch / "no/dst") + "' error (2)");
    {
        const test::FileSizeLimit full(1000);
        EXPECT_EQ(renaming(src, scratch / "dst"),
                  withCode("write dst file '" + (scratch / "dst") + "' error", EFBIG));
    }
    EXPECT_EQ(fs::file_size(src), 100'000U);
    EXPECT_FALSE(fs::exists(scratch / "dst"));
}

TEST_F(RenameFile, KeepsTheSourceWhenTheTargetIsADevice) {
    const std::string src = scratch.file("src", "kept");
    fs::create_symlink("/dev/null", scratch / "link");
    for (const std::string& dst : {std::string("/dev/null"), scratch / "link"}) {
        EXPECT_EQ(renaming(src, dst), "open dst file '" + dst + "' error (22)");
        EXPECT_EQ(test::readFile(src), "kept");
    }
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(RenameFile, KeepsAPipe) {
    const std::string pipe = scratch / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(renaming(pipe, scratch / "dst"), "open src file '" + pipe + "' error (22)");
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_FALSE(fs::exists(scratch / "dst"));
}

TEST_F(RenameFile, SaysThatTheSourceIsMissing) {
    EXPECT_EQ(renaming(scratch / "src", scratch / "dst"),
              "open src file '" + (scratch / "src") + "' error (2)");
}

}  // namespace
}  // namespace corvane
