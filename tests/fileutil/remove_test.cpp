#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <vector>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/held_signals.h"
#include "support/resource_limit.h"
#include "support/signal_action.h"
#include "support/thrown.h"
#include "support/tree.h"
#include "support/unix_socket.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;
using test::withCode;

class Removing : public test::FilesTest {};

TEST_F(Removing, RemovesAFile) {
    const std::string file = scratch.file("file");
    removeFile(file);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(Removing, IsContentWithAFileThatIsMissing) {
    EXPECT_NO_THROW(removeFile(scratch / "missing"));
    EXPECT_NO_THROW(removeFile(""));
}

TEST_F(Removing, SaysWhyAFileCannotBeRemoved) {
    const std::string inner = scratch.file("file") + "/x";
    EXPECT_EQ(thrownBy<IOException>([&] { removeFile(inner); }),
              "remove file '" + inner + "' error (20)");
    scratch.file("dir/x");
    EXPECT_EQ(thrownBy<IOException>([&] { removeFile(scratch / "dir"); }),
              withCode("remove file '" + (scratch / "dir") + "' error", ENOTEMPTY));
}

TEST_F(Removing, RemovesALinkAndNotWhatItLeadsTo) {
    const std::string file = scratch.file("file", "kept");
    fs::create_symlink(file, scratch / "link");
    fs::create_symlink("nowhere", scratch / "broken");
    removeFile(scratch / "link");
    removeFile(scratch / "broken");
    EXPECT_EQ(test::treeAt(scratch.path()), (test::Tree{{"file", "file:kept"}}));
}

TEST_F(Removing, RemovesPipesAndSocketsAsFiles) {
    const test::WorkingDirectory inside(scratch.path());
    const FileDesc sock = test::unixSocketAt("socket");
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    removeFile("socket");
    removeFile("pipe");
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST_F(Removing, RemovesAnEmptyDirectory) {
    const std::string directory = scratch.directory("dir");
    removeDirectory(directory);
    removeDirectory(directory);
    removeDirectory(directory, false);
    removeDirectory(scratch.directory("other"), false);
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

TEST_F(Removing, KeepsADirectoryThatIsNotEmpty) {
    scratch.file("dir/x");
    EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(scratch / "dir"); }),
              withCode("remove directory '" + (scratch / "dir") + "' error", ENOTEMPTY));
    EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(scratch / "dir", false); }),
              withCode("remove directory '" + (scratch / "dir/") + "' error", ENOTEMPTY));
    EXPECT_TRUE(fs::exists(scratch / "dir/x"));
}

TEST_F(Removing, DoesNotTakeAFileForADirectory) {
    const std::string file = scratch.file("file");
    EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(file); }),
              "remove directory '" + file + "' error (20)");
    EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(file, true); }),
              "opendir '" + file + "/' error 20 (20)");
}

TEST_F(Removing, SaysThatATreeIsMissing) {
    EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(scratch / "missing", true); }),
              "opendir '" + (scratch / "missing/") + "' error 2 (2)");
}

TEST_F(Removing, RemovesAWholeTree) {
    scratch.file("tree/a/b/c/file", "x");
    scratch.file("tree/.hidden", "x");
    scratch.directory("tree/empty/er");
    ASSERT_EQ(::mkfifo((scratch / "tree/pipe").c_str(), 0600), 0);
    scratch.file("beside", "kept");
    removeDirectory(scratch / "tree", true);
    EXPECT_EQ(test::treeAt(scratch.path()), (test::Tree{{"beside", "file:kept"}}));
}

TEST_F(Removing, NeverFollowsALinkOutOfTheTree) {
    scratch.file("outside/file", "kept");
    scratch.directory("tree/sub");
    fs::create_directory_symlink(scratch / "outside", scratch / "tree/absolute");
    fs::create_directory_symlink("../../outside", scratch / "tree/sub/relative");
    fs::create_symlink(scratch / "outside/file", scratch / "tree/file");
    fs::create_directory_symlink("..", scratch / "tree/sub/parent");
    removeDirectory(scratch / "tree", true);
    EXPECT_EQ(test::treeAt(scratch.path()),
              (test::Tree{{"outside", "directory"}, {"outside/file", "file:kept"}}));
}

TEST_F(Removing, RemovesALinkToADirectoryItselfHoweverItIsNamed) {
    for (const char* spelling : {"link", "link/", "link//", "link\\"}) {
        scratch.file("outside/file", "kept");
        fs::create_directory_symlink("outside", scratch / "link");
        removeDirectory(scratch / spelling, true);
        EXPECT_EQ(test::treeAt(scratch.path()),
                  (test::Tree{{"outside", "directory"}, {"outside/file", "file:kept"}}))
            << spelling;
    }
}

TEST_F(Removing, GoesThroughALinkThatIsOnlyOnTheWay) {
    scratch.file("outside/tree/file");
    fs::create_directory_symlink("outside", scratch / "link");
    removeDirectory(scratch / "link/tree", true);
    EXPECT_TRUE(fs::is_empty(scratch / "outside"));
}

TEST_F(Removing, StopsAtASocketBelowWhichCountsAsADirectory) {
    const test::WorkingDirectory inside(scratch.directory("tree"));
    const FileDesc sock = test::unixSocketAt("socket");
    EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(scratch / "tree", true); }),
              "opendir '" + (scratch / "tree/socket/") + "' error 20 (20)");
    EXPECT_TRUE(fs::exists(scratch / "tree/socket"));
}

TEST_F(Removing, RefusesTheRootOfAllInEverySpelling) {
    for (const std::string spelling : {"/", "//", "/.", "/tmp/.."}) {
        EXPECT_EQ(thrownBy<IOException>([&] { removeDirectory(spelling, true); }),
                  withCode("remove directory '" + spelling +
                               (spelling.back() == '/' ? "' error" : "/' error"),
                           EBUSY));
    }
    EXPECT_TRUE(fs::exists(scratch.path()));
}

TEST_F(Removing, DoesNothingForAnEmptyPath) {
    const test::WorkingDirectory inside(scratch.path());
    scratch.file("file");
    removeDirectory("", true);
    removeDirectory("");
    EXPECT_TRUE(fs::exists(scratch / "file"));
}

TEST_F(Removing, RemovesNamesOfAnyBytes) {
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') {
            const std::string name = "tree/a" + std::string(1, static_cast<char>(byte));
            scratch.file(name + "d/file");
            scratch.file(name);
        }
    }
    removeDirectory(scratch / "tree", true);
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

// Running out of descriptors in the middle of a tree must never look like an empty directory.
TEST_F(Removing, FailsWithoutDescriptorsAndSucceedsLater) {
    scratch.file("tree/a/b/c/d/e/f/file");
    for (int free = 0;; ++free) {
        const int next = test::nextDescriptor();
        std::string failure = "none";
        {
            const test::DescriptorLimit descriptors(next + free);
            try {
                removeDirectory(scratch / "tree", true);
            } catch (const IOException& e) {
                EXPECT_EQ(e.code, EMFILE) << e.what();
                failure = e.what();
            }
        }
        if (failure == "none") {
            break;
        }
        EXPECT_TRUE(fs::exists(scratch / "tree/a/b/c/d/e/f/file")) << failure;
        ASSERT_LT(free, 64);
    }
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

std::vector<std::string> vanishing;

TEST_F(Removing, IsContentWithFilesThatVanishMeanwhile) {
    vanishing = {scratch.file("tree/a"), scratch.file("tree/b")};
    const HeldSignals held;
    // Let in when the entries have been read.
    const test::SignalAction others(SIGCHLD, [](int) {
        for (const std::string& file : vanishing) {
            static_cast<void>(::unlink(file.c_str()));
        }
    });
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(thrownBy([&] { removeDirectory(scratch / "tree", true); }), "nothing was thrown");
    EXPECT_TRUE(fs::is_empty(scratch.path()));
}

}  // namespace
}  // namespace corvane
