#include "corvane-play/process.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/environment.h"
#include "support/scratch_directory.h"

namespace corvane::play {
namespace {

TEST(FindProgram, PassesOverADirectoryAndAFileThatCannotBeExecuted) {
    test::ScratchDirectory scratch;
    scratch.directory("first");
    scratch.directory("first/browser");
    scratch.directory("second");
    scratch.file("second/browser");
    scratch.directory("third");
    scratch.file("third/browser");
    ASSERT_EQ(::chmod((scratch / "third/browser").c_str(), 0755), 0);
    const test::EnvironmentVariable path(
        "PATH", (scratch / "first") + ":" + (scratch / "second") + ":" + (scratch / "third"));
    EXPECT_EQ(findProgram("browser"), scratch / "third/browser");
    EXPECT_EQ(findProgram(scratch / "first/browser"), "");
    EXPECT_EQ(findProgram("missing"), "");
}

}  // namespace
}  // namespace corvane::play
