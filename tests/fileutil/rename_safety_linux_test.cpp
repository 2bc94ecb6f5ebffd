// What a move must not lose: the data at a power cut, a file that is replaced meanwhile, and a file
// that changes its identity when it is opened. Linux only.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/held_signals.h"
#include "support/signal_action.h"
#include "support/thrown.h"
#include "support/tree.h"

namespace corvane {
namespace {

/// What the fsync(2) of this test notes, and what it fails with.
struct Syncs {
    std::string source;
    std::vector<std::string> calls;
    int error = 0;

    int call(int fd) {
        const std::filesystem::path path =
            std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd));
        calls.push_back(path.filename().string() +
                        (std::filesystem::exists(source) ? "" : " too late"));
        if (error != 0) {
            errno = error;
            return -1;
        }
        return static_cast<int>(::syscall(SYS_fsync, fd));
    }
};

Syncs* watched = nullptr;

}  // namespace
}  // namespace corvane

// Takes the place of the C library's function in this program.
extern "C" int fsync(int fd) {
    return corvane::watched != nullptr ? corvane::watched->call(fd)
                                       : static_cast<int>(::syscall(SYS_fsync, fd));
}

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;
using test::Tree;
using test::treeAt;
using test::withCode;

class RenameSafety : public test::FilesTest {
  protected:
    RenameSafety() { watched = &syncs; }
    ~RenameSafety() override { watched = nullptr; }

    std::string renaming(const std::string& src, const std::string& dst) {
        syncs.source = src;
        return thrownBy<IOException>([&] { renameFile(src, dst); });
    }
    Syncs syncs;
};

TEST_F(RenameSafety, BringsTheTargetAndItsNameToTheDiskBeforeTheSourceGoes) {
    const std::string src = scratch.file("from/src", "data");
    scratch.directory("to");
    EXPECT_EQ(renaming(src, scratch / "to/dst"), "nothing was thrown");
    EXPECT_EQ(syncs.calls, (std::vector<std::string>{"dst", "to"}));
    EXPECT_FALSE(fs::exists(src));
}

TEST_F(RenameSafety, BringsTheNameToTheDiskWhereALinkLeads) {
    scratch.directory("to");
    fs::create_symlink("to/dst", scratch / "link");
    EXPECT_EQ(renaming(scratch.file("src", "data"), scratch / "link"), "nothing was thrown");
    EXPECT_EQ(syncs.calls, (std::vector<std::string>{"dst", "to"}));
}

TEST_F(RenameSafety, BringsANewDirectoryToTheDiskBeforeTheOldOneGoes) {
    scratch.directory("to");
    EXPECT_EQ(renaming(scratch.directory("src"), scratch / "to/dst"), "nothing was thrown");
    EXPECT_EQ(syncs.calls, (std::vector<std::string>{"to"}));
}

TEST_F(RenameSafety, BringsALargeFileToTheDiskPieceByPiece) {
    const std::string src = scratch.file("src");
    fs::resize_file(src, 40'000'000);
    EXPECT_EQ(renaming(src, scratch / "dst"), "nothing was thrown");
    EXPECT_GE(syncs.calls.size(), 4U);
}

TEST_F(RenameSafety, KeepsTheSourceWhenTheTargetCannotBeBroughtToTheDisk) {
    const std::string src = scratch.file("src", "data");
    syncs.error = EIO;
    EXPECT_EQ(renaming(src, scratch / "dst"),
              withCode("write dst file '" + (scratch / "dst") + "' error", EIO));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:data"}}));
}

TEST_F(RenameSafety, KeepsADirectoryWhoseNewNameCannotBeBroughtToTheDisk) {
    const std::string src = scratch.directory("src");
    syncs.error = EIO;
    EXPECT_EQ(renaming(src, scratch / "dst"),
              withCode("makeDirectory '" + (scratch / "dst") + "' error", EIO));
    EXPECT_TRUE(fs::exists(src));
    EXPECT_EQ(renaming(src, scratch / "dst"),
              withCode("makeDirectory '" + (scratch / "dst/src") + "' error", EIO));
}

TEST_F(RenameSafety, DoesNotNeedAFileSystemThatKnowsOfTheDisk) {
    for (const int error : {EINVAL, EROFS, ENOTSUP, ENOSYS}) {
        syncs.error = error;
        EXPECT_EQ(renaming(scratch.file("src", "x"), scratch / "dst"), "nothing was thrown");
        EXPECT_EQ(treeAt(scratch.path()), (Tree{{"dst", "file:x"}})) << error;
    }
}

TEST_F(RenameSafety, DoesNotRemoveWhatHasTakenThePlaceOfTheSource) {
    static std::string src;
    static std::string other;
    src = scratch.file("src", "old");
    other = scratch.file("other", "new");
    const HeldSignals held;
    const test::SignalAction replacing(
        SIGCHLD, [](int) { static_cast<void>(std::rename(other.c_str(), src.c_str())); });
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(renaming(src, scratch / "dst"), withCode("remove file '" + src + "' error", EBUSY));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:new"}, {"dst", "file:old"}}));
}

TEST_F(RenameSafety, IsContentWhenSomebodyElseHasRemovedTheSource) {
    static std::string src;
    src = scratch.file("src", "data");
    const HeldSignals held;
    const test::SignalAction removing(SIGCHLD,
                                      [](int) { static_cast<void>(::unlink(src.c_str())); });
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(renaming(src, scratch / "dst"), "nothing was thrown");
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"dst", "file:data"}}));
}

/// A file system of two layers, of which the lower one never changes.
class Overlay {
  public:
    explicit Overlay(const test::ScratchDirectory& scratch) : path_(scratch.directory("merged")) {
        const std::string options = "lowerdir=" + scratch.directory("lower") +
                                    ",upperdir=" + scratch.directory("upper") +
                                    ",workdir=" + scratch.directory("work");
        mounted_ = ::mount("overlay", path_.c_str(), "overlay", 0, options.c_str()) == 0;
    }
    ~Overlay() {
        if (mounted_) {
            ::umount2(path_.c_str(), MNT_DETACH);
        }
    }
    Overlay(const Overlay&) = delete;
    Overlay& operator=(const Overlay&) = delete;
    Overlay(Overlay&&) = delete;
    Overlay& operator=(Overlay&&) = delete;

    bool isMounted() const { return mounted_; }
    const std::string& path() const { return path_; }

  private:
    std::string path_;
    bool mounted_ = false;
};

TEST_F(RenameSafety, LeavesAFileOfSeveralLinksThatIsMovedOntoItselfOnLayers) {
    fs::create_hard_link(scratch.file("lower/a", "kept"), scratch / "lower/b");
    const Overlay overlay(scratch);
    if (!overlay.isMounted()) {
        GTEST_SKIP() << "may not mount a file system of layers here";
    }
    for (const std::string& dst :
         {overlay.path() + "/a", overlay.path(), overlay.path() + "/./a"}) {
        EXPECT_EQ(renaming(overlay.path() + "/a", dst), "nothing was thrown");
        EXPECT_EQ(treeAt(overlay.path()), (Tree{{"a", "file:kept"}, {"b", "file:kept"}})) << dst;
    }
}

TEST_F(RenameSafety, LeavesBothLinksOfAFileThatIsMovedFromOneToTheOtherOnLayers) {
    fs::create_hard_link(scratch.file("lower/a", "kept"), scratch / "lower/b");
    const Overlay overlay(scratch);
    if (!overlay.isMounted()) {
        GTEST_SKIP() << "may not mount a file system of layers here";
    }
    EXPECT_EQ(renaming(overlay.path() + "/a", overlay.path() + "/b"), "nothing was thrown");
    EXPECT_EQ(treeAt(overlay.path()), (Tree{{"a", "file:kept"}, {"b", "file:kept"}}));
}

}  // namespace
}  // namespace corvane
