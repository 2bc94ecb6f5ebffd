// makeDir, delete, copy and rename: their parameters, replies and log lines. What they do to files
// is tested in tests/fileutil.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/command_fixture.h"
#include "support/thrown.h"
#include "support/tree.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::commandLine;
using test::failure;
using test::success;
using test::Tree;
using test::treeAt;

class ChangeCommands : public test::CommandTest {
  protected:
    Lines error(const std::string& cmd, const std::string& detail) const {
        return {commandLine("ERROR", cmd, detail)};
    }
};

TEST_F(ChangeCommands, MakeDirCreatesADirectory) {
    const std::string path = scratch / "new";
    EXPECT_EQ(ask("makeDir", path + "\r\n"), success("makeDir", "", path));
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_EQ(log.lines(),
              Lines{commandLine("DEBUG", "makeDir", ": directory '" + path + "' created (1)")});
}

TEST_F(ChangeCommands, MakeDirIsContentWithOneThatExists) {
    const std::string path = scratch.directory("old");
    EXPECT_EQ(ask("makeDir", path), success("makeDir", "", path));
    EXPECT_EQ(log.lines(),
              Lines{commandLine("DEBUG", "makeDir", ": directory '" + path + "' created (0)")});
}

TEST_F(ChangeCommands, MakeDirTurnsBackslashesAndKeepsOtherCharacters) {
    scratch.directory("a");
    EXPECT_EQ(ask("makeDir", scratch.path() + "a\\b?*"), success("makeDir", "", scratch / "a/b?*"));
    EXPECT_TRUE(fs::is_directory(scratch / "a/b?*"));
}

TEST_F(ChangeCommands, MakeDirFailsWithThePathAsAHint) {
    const std::string path = scratch / "missing/new";
    EXPECT_EQ(ask("makeDir", path), failure("makeDir", path));
    EXPECT_EQ(log.lines(), error("makeDir", ": directory '" + path + "' ERROR: 'makeDirectory '" +
                                                path + "' error (2)'"));
    EXPECT_EQ(ask("makeDir"), failure("makeDir"));
    EXPECT_EQ(log.lines(), error("makeDir", ": directory '' ERROR: 'makeDirectory '' error (2)'"));
}

TEST_F(ChangeCommands, DeleteRemovesAFile) {
    EXPECT_EQ(ask("delete", scratch.file("file")), success("delete"));
    EXPECT_TRUE(fs::is_empty(scratch.path()));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ChangeCommands, DeleteRemovesAWholeTree) {
    scratch.file("d/e/file");
    EXPECT_EQ(ask("delete", scratch.path() + "d\\\n"), success("delete"));
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST_F(ChangeCommands, DeleteSucceedsForWhatIsMissing) {
    EXPECT_EQ(ask("delete", scratch / "missing"), success("delete"));
    EXPECT_EQ(ask("delete", ""), success("delete"));
}

TEST_F(ChangeCommands, DeleteKeepsQuestionMarksInThePath) {
    scratch.file("a?b*");
    EXPECT_EQ(ask("delete", scratch / "a?b*"), success("delete"));
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST_F(ChangeCommands, DeleteRemovesALinkItself) {
    scratch.file("outside/file", "kept");
    for (const char* spelling : {"link", "link/", "link\\"}) {
        fs::create_directory_symlink("outside", scratch / "link");
        EXPECT_EQ(ask("delete", scratch / spelling), success("delete"));
        EXPECT_EQ(treeAt(scratch.path()),
                  (Tree{{"outside", "directory"}, {"outside/file", "file:kept"}}));
    }
}

TEST_F(ChangeCommands, DeleteSaysWhyItFails) {
    const std::string path = scratch.file("file") + "/x";
    EXPECT_EQ(ask("delete", path), failure("delete"));
    EXPECT_EQ(log.lines(), error("delete", ": file '" + path + "' ERROR: 'remove file '" + path +
                                               "' error (20)'"));
}

TEST_F(ChangeCommands, DeleteRefusesTheRoot) {
    EXPECT_EQ(ask("delete", "//"), failure("delete"));
    EXPECT_EQ(
        log.lines(),
        error("delete",
              test::withCode(": file '//' ERROR: 'remove directory '//' error", EBUSY) + "'"));
}

TEST_F(ChangeCommands, CopyCopiesAFileAndSaysNothing) {
    const std::string source = scratch.file("a", "x");
    EXPECT_EQ(ask("copy", source + "\n" + (scratch / "b")), success("copy"));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"a", "file:x"}, {"b", "file:x"}}));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ChangeCommands, CopyCleansBothPathsAndWarns) {
    scratch.file("a", "x");
    scratch.directory("d");
    EXPECT_EQ(ask("copy", (scratch / "a?") + "\r\n" + scratch.path() + "d\\*b\r\n"),
              success("copy"));
    EXPECT_EQ(test::readFile(scratch / "d/b"), "x");
    const std::string begin = "WARN corvane.fileutil.correctPathInvalidChars path '";
    const std::string middle = "' has invalid char(s) and was converted to '";
    EXPECT_EQ(log.lines(), (Lines{begin + (scratch / "a?") + middle + (scratch / "a") + "'",
                                  begin + (scratch / "d/*b") + middle + (scratch / "d/b") + "'"}));
}

TEST_F(ChangeCommands, CopyIsRecursiveUnlessTheFlagIsExactlyFalse) {
    scratch.file("src/sub/a", "x");
    for (const std::string flag : {"", "true", "False", "FALSE", "0", " false"}) {
        scratch.directory("dst");
        EXPECT_EQ(ask("copy", (scratch / "src") + "\n" + (scratch / "dst") + "\n" + flag),
                  success("copy"));
        EXPECT_TRUE(fs::exists(scratch / "dst/sub/a")) << flag;
        fs::remove_all(scratch / "dst");
    }
    scratch.directory("dst");
    EXPECT_EQ(ask("copy", (scratch / "src") + "\n" + (scratch / "dst") + "\nfalse\r\n"),
              success("copy"));
    EXPECT_TRUE(fs::is_empty(scratch / "dst"));
}

TEST_F(ChangeCommands, CopyFiltersByExtension) {
    for (const char* name : {"a.swf", "b.jpg", "c.txt", "d"}) {
        scratch.file(std::string("src/") + name, "x");
    }
    scratch.directory("dst");
    EXPECT_EQ(ask("copy", (scratch / "src") + "\n" + (scratch / "dst") + "\n\n swf, jpg\njpg"),
              success("copy"));
    EXPECT_EQ(treeAt(scratch / "dst"), (Tree{{"a.swf", "file:x"}}));
}

TEST_F(ChangeCommands, CopyOfOneFileIsNotFiltered) {
    scratch.file("a.txt", "x");
    EXPECT_EQ(ask("copy", (scratch / "a.txt") + "\n" + (scratch / "b") + "\nfalse\nswf\ntxt"),
              success("copy"));
    EXPECT_EQ(test::readFile(scratch / "b"), "x");
}

TEST_F(ChangeCommands, CopySaysWhyItFails) {
    EXPECT_EQ(ask("copy", (scratch / "a") + "\n" + (scratch / "b")), failure("copy"));
    EXPECT_EQ(log.lines(),
              error("copy", ": ERROR: 'open src file '" + (scratch / "a") + "' error (2)'"));
    scratch.file("d/x");
    EXPECT_EQ(ask("copy", (scratch / "d") + "\n" + (scratch / "d/e")), failure("copy"));
    EXPECT_EQ(log.lines(),
              error("copy", ": ERROR: 'open dst file '" + (scratch / "d/e/x") + "' error (2)'"));
    scratch.directory("d/e");
    EXPECT_EQ(ask("copy", (scratch / "d") + "\n" + (scratch / "d/e")), failure("copy"));
    EXPECT_EQ(log.lines(),
              error("copy", ": ERROR: 'cannot copy directory '" + (scratch / "d/") +
                                "' into itself as '" + (scratch / "d/e/") + "' (22)'"));
}

TEST_F(ChangeCommands, RenameMovesAFileAndSaysNothing) {
    const std::string source = scratch.file("a", "x");
    EXPECT_EQ(ask("rename", source + "\n" + (scratch / "b")), success("rename"));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"b", "file:x"}}));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ChangeCommands, RenameOfAFileOntoItselfSucceeds) {
    const std::string path = scratch.file("a", "x");
    fs::create_hard_link(path, scratch / "hard");
    for (const std::string& target :
         {path, scratch / "./a", scratch.path(), scratch / "hard", scratch.path() + "\\a"}) {
        EXPECT_EQ(ask("rename", path + "\n" + target), success("rename")) << target;
        EXPECT_EQ(test::readFile(path), "x") << target;
        EXPECT_EQ(log.lines(), Lines{});
    }
}

TEST_F(ChangeCommands, RenameCleansBothPaths) {
    scratch.file("a", "x");
    EXPECT_EQ(ask("rename", (scratch / "?a") + "\n" + (scratch / "b*")), success("rename"));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"b", "file:x"}}));
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(ChangeCommands, RenameOfADirectoryWithContentsCopiesItAndFails) {
    scratch.file("a/x", "1");
    EXPECT_EQ(ask("rename", (scratch / "a") + "\n" + (scratch / "b")), failure("rename"));
    EXPECT_EQ(log.lines(), error("rename", test::withCode(": ERROR: 'remove directory '" +
                                                              (scratch / "a") + "' error",
                                                          ENOTEMPTY) +
                                               "'"));
    EXPECT_EQ(treeAt(scratch / "a"), treeAt(scratch / "b"));
}

TEST_F(ChangeCommands, RenameIntoItselfFails) {
    scratch.directory("a/b");
    EXPECT_EQ(ask("rename", (scratch / "a") + "\n" + (scratch / "a/b")), failure("rename"));
    EXPECT_EQ(log.lines(),
              error("rename", ": ERROR: 'cannot copy directory '" + (scratch / "a") +
                                  "' into itself as '" + (scratch / "a/b/a") + "' (22)'"));
}

TEST_F(ChangeCommands, RenameOfWhatIsMissingFails) {
    EXPECT_EQ(ask("rename", (scratch / "a") + "\n" + (scratch / "b")), failure("rename"));
    EXPECT_EQ(log.lines(),
              error("rename", ": ERROR: 'open src file '" + (scratch / "a") + "' error (2)'"));
}

}  // namespace
}  // namespace corvane
