// What a confined server counts as within its clients' reach.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "fileutil/reach.h"
#include "platform/confinement.h"
#include "support/in_child.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

using platform::Access;
using test::inChild;

class Reach : public testing::Test {
  protected:
    void SetUp() override {
        if (platform::Confinement::kernelVersion() == 0) {
            GTEST_SKIP() << "the kernel has no Landlock, or it is switched off";
        }
    }

    /// What `ask` answers in a process that may change "in" and read the files of "own".
    template <typename Ask>
    bool confined(Ask ask) const {
        return inChild([&] {
                   platform::Confinement(
                       {{scratch / "in", Access::Change}, {scratch / "own", Access::Look}})
                       .enforce();
                   return ask() ? 0 : 1;
               }) == 0;
    }
    bool isWithin(const std::string& path) const {
        return confined([&] { return isWithinReach(AT_FDCWD, path); });
    }
    bool isEntryWithin(const std::string& path) const {
        return confined([&] { return isEntryWithinReach(path); });
    }
    void link(const std::string& target, const std::string& name) const {
        std::filesystem::create_symlink(target, scratch / name);
    }

    test::ScratchDirectory scratch;
    std::string file = scratch.file("in/file");
    std::string outside = scratch.file("out/file");
    std::string own = scratch.file("own/file");
};

TEST_F(Reach, IsEverythingWithoutConfinement) {
    EXPECT_TRUE(isWithinReach(AT_FDCWD, "/"));
    EXPECT_TRUE(isEntryWithinReach("/missing/file"));
}

TEST_F(Reach, IsWhatLiesBelowAFolderOrWouldLieThere) {
    for (const char* name : {"in", "in/", "in/file", "in/none", "in/none/none", "in/file/none",
                             "in/none/../file", "out/../in/file"}) {
        EXPECT_TRUE(isWithin(scratch / name)) << name;
    }
    EXPECT_TRUE(isWithin(scratch / "in/" + std::string(300, 'n')));  // no name is that long
}

TEST_F(Reach, IsNothingElseWhetherItIsThereOrNot) {
    for (const char* name : {"", "out", "out/file", "out/none", "none", "none/none", "in/..",
                             "in/../out/none", "own", "own/none", "own/file"}) {
        EXPECT_FALSE(isWithin(scratch / name)) << name;
    }
    EXPECT_FALSE(isWithin("/"));
    EXPECT_FALSE(isWithin("/missing"));
}

TEST_F(Reach, GoesByWhatALinkLeadsTo) {
    link("../in/file", "out/inwards");
    link(file, "in/absolute");
    link(file, "out/absolute");
    link("file", "in/relative");
    link("relative", "in/twice");
    link("none", "in/dangling");
    for (const char* name : {"out/inwards", "in/absolute", "out/absolute", "in/relative",
                             "in/twice", "in/dangling", "in/dangling/", "in/dangling/none"}) {
        EXPECT_TRUE(isWithin(scratch / name)) << name;
    }
    link("../out/file", "in/outwards");
    link("../out/none", "in/nowhere");
    link("nowhere", "in/nowhere2");
    link("/missing", "in/missing");
    link("loop", "in/loop");
    for (const char* name : {"in/outwards", "in/nowhere", "in/nowhere/", "in/nowhere2",
                             "in/nowhere/none", "in/missing", "in/loop"}) {
        EXPECT_FALSE(isWithin(scratch / name)) << name;
    }
}

TEST_F(Reach, OfAnEntryGoesByTheDirectoryThatHoldsIt) {
    link(outside, "in/outwards");
    link(file, "out/inwards");
    EXPECT_TRUE(isEntryWithin(scratch / "in/outwards"));
    EXPECT_TRUE(isEntryWithin(scratch / "in/outwards///"));
    EXPECT_TRUE(isEntryWithin(scratch / "in/none"));
    EXPECT_FALSE(isEntryWithin(scratch / "out/inwards"));
    EXPECT_FALSE(isEntryWithin(scratch / "out/none"));
    EXPECT_FALSE(isEntryWithin(scratch / "in"));
    EXPECT_FALSE(isEntryWithin(scratch / "in/"));
}

TEST_F(Reach, CountsFromAnOpenDirectory) {
    const auto from = [&](const char* directory, const char* name) {
        return confined([&] {
            return isWithinReach(::open((scratch / directory).c_str(), O_PATH | O_DIRECTORY), name);
        });
    };
    EXPECT_TRUE(from("in", "file"));
    EXPECT_TRUE(from("out", "../in/none"));
    EXPECT_FALSE(from("out", "file"));
    EXPECT_FALSE(from("in", "../out/none"));
}

}  // namespace
}  // namespace corvane
