// Copies of trees where a link, or the target itself, leads back to the source.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
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

class CopyThroughLinks : public test::TreeCopyTest {};

TEST_F(CopyThroughLinks, RefusesWhatIsBelowTheSourceHoweverItIsNamed) {
    scratch.file("src/a", "1");
    scratch.directory("src/sub/deep");
    fs::create_directory_symlink("src", scratch / "link");
    fs::create_directory_symlink("../src/sub", scratch / "src/inner");
    const test::WorkingDirectory inside(scratch.path());
    const Tree before = treeAt(scratch.path());
    for (const char* name : {"src/sub", "src/sub/", "src/sub/deep", "./src/sub/.", "link/sub",
                             "src/inner", "src/inner/deep", "src/../src/sub"}) {
        const std::string dst = name;
        for (const std::string& src : {std::string("src"), scratch / "src", std::string("link")}) {
            EXPECT_EQ(copying(src, dst), "cannot copy directory '" + src + "/' into itself as '" +
                                             dst + (dst.back() == '/' ? "" : "/") + "' (22)");
            EXPECT_EQ(treeAt(scratch.path()), before) << src << " to " << dst;
        }
    }
}

TEST_F(CopyThroughLinks, DoesNotCreateATargetBelowTheSource) {
    scratch.file("src/a", "1");
    EXPECT_EQ(copying(scratch / "src", scratch / "src/new"),
              "open dst file '" + (scratch / "src/new/a") + "' error (2)");
    EXPECT_FALSE(fs::exists(scratch / "src/new"));
}

TEST_F(CopyThroughLinks, OntoItselfChangesNothing) {
    scratch.file("src/a", "1");
    scratch.file("src/sub/deep/b", "2");
    fs::create_directory_symlink("src", scratch / "link");
    const Tree before = treeAt(scratch.path());
    CopyOptions firstLevel;
    firstLevel.recursive = false;
    for (const char* target : {"src", "src/", "src/sub/..", "link"}) {
        copyDirectory(scratch / "src", scratch / target, nullptr);
        copyDirectory(scratch / "src", scratch / target, &firstLevel);
        EXPECT_EQ(treeAt(scratch.path()), before) << target;
    }
}

TEST_F(CopyThroughLinks, GoesIntoADirectoryBelowWhenNotRecursive) {
    scratch.file("src/a", "1");
    scratch.file("src/sub/b", "2");
    CopyOptions firstLevel;
    firstLevel.recursive = false;
    copyDirectory(scratch / "src", scratch / "src/sub", &firstLevel);
    EXPECT_EQ(
        treeAt(scratch / "src"),
        (Tree{{"a", "file:1"}, {"sub", "directory"}, {"sub/a", "file:1"}, {"sub/b", "file:2"}}));
}

TEST_F(CopyThroughLinks, AllowsATargetThatOnlyLooksLikeBelow) {
    scratch.file("src/a", "1");
    scratch.directory("src2");
    scratch.directory("src/sub");
    copyDirectory(scratch / "src", scratch / "src2", nullptr);
    EXPECT_TRUE(fs::exists(scratch / "src2/a"));
    copyDirectory(scratch / "src/sub", scratch / "src", nullptr);  // upwards
    copyDirectory(scratch / "src", scratch.path(), nullptr);
    EXPECT_TRUE(fs::exists(scratch / "a"));
}

TEST_F(CopyThroughLinks, EndsWhenALinkInTheTargetLeadsBackBelowTheSource) {
    scratch.directory("src/x/y");
    scratch.directory("dst");
    fs::create_directory_symlink("../src/x/y", scratch / "dst/x");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              "cannot copy directory '" + (scratch / "src/x/") + "' into itself as '" +
                  (scratch / "dst/x/") + "' (22)");
}

TEST_F(CopyThroughLinks, GoesOnWhereALinkInTheTargetLeadsToTheSourceItself) {
    scratch.file("src/x/a", "1");
    scratch.file("src/x/deep/b", "2");
    scratch.file("src/y/c", "3");
    scratch.directory("dst");
    fs::create_directory_symlink("../src/x", scratch / "dst/x");
    const Tree before = treeAt(scratch / "src");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"), "nothing was thrown");
    EXPECT_EQ(treeAt(scratch / "src"), before);
    EXPECT_EQ(treeAt(scratch / "dst"),
              (Tree{{"x", "link:../src/x"}, {"y", "directory"}, {"y/c", "file:3"}}));
}

TEST_F(CopyThroughLinks, GoesThroughALinkInTheTargetThatLeadsElsewhere) {
    scratch.file("src/x/a", "1");
    scratch.directory("elsewhere");
    scratch.directory("dst");
    fs::create_directory_symlink("../elsewhere", scratch / "dst/x");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(treeAt(scratch / "elsewhere"), (Tree{{"a", "file:1"}}));
}

TEST_F(CopyThroughLinks, CopiesWhatALinkToAFileLeadsTo) {
    scratch.file("outside", "1");
    scratch.directory("src");
    scratch.directory("dst");
    fs::create_symlink("../outside", scratch / "src/link");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"link", "file:1"}}));
}

TEST_F(CopyThroughLinks, StopsAtALinkToADirectory) {
    scratch.directory("src");
    scratch.directory("dst");
    fs::create_directory_symlink("..", scratch / "src/link");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              withCode("read src file '" + (scratch / "src/link") + "' error", EISDIR));
    EXPECT_TRUE(fs::is_empty(scratch / "dst"));
}

TEST_F(CopyThroughLinks, KeepsTheFileThatALinkToADirectoryWouldReplace) {
    scratch.directory("src");
    fs::create_directory_symlink("..", scratch / "src/link");
    scratch.file("dst/link", "kept");
    EXPECT_EQ(copying(scratch / "src", scratch / "dst"),
              withCode("read src file '" + (scratch / "src/link") + "' error", EISDIR));
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"link", "file:kept"}}));
}

}  // namespace
}  // namespace corvane
