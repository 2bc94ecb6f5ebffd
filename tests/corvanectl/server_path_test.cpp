#include "corvanectl/server_path.h"

#include <gtest/gtest.h>

#include "text/exception.h"

namespace corvane::ctl {
namespace {

TEST(ServerPath, TakesNamesApart) {
    EXPECT_EQ(withSlashes("a\\b/c"), "a/b/c");
    EXPECT_EQ(directoryPart("/a/b"), "/a/");
    EXPECT_EQ(directoryPart("b"), "");
    EXPECT_EQ(namePart("/a/b"), "b");
    EXPECT_EQ(namePart("b"), "b");
    EXPECT_EQ(namePart("/a/"), "");
    EXPECT_EQ(inDirectory("/a", "b"), "/a/b");
    EXPECT_EQ(inDirectory("/", "b"), "/b");
    EXPECT_EQ(fromRoot("b", "/a/"), "/a/b");
    EXPECT_EQ(fromRoot("/b", "/a/"), "/b");
}

TEST(ServerPath, LeavesOutWhatMeansNothing) {
    EXPECT_EQ(normalised("/a//b/./c/"), "/a/b/c");
    EXPECT_EQ(normalised("/a/../b"), "/b");
    EXPECT_EQ(normalised("/../../b"), "/b");
    EXPECT_EQ(normalised("/"), "/");
}

TEST(ServerPath, ComparesWithoutRegardToCase) {
    EXPECT_TRUE(equalButForCase("/A/z", "/a/Z"));
    EXPECT_FALSE(equalButForCase("/a", "/a/"));
    EXPECT_FALSE(equalButForCase("@", "`"));
}

TEST(RequireExactName, RefusesNamesThatTheServerWouldChange) {
    EXPECT_NO_THROW(requireExactName("/a b"));
    for (const char* name : {"", "a?", "*"}) {
        EXPECT_THROW(requireExactName(name), Exception) << name;
    }
}

}  // namespace
}  // namespace corvane::ctl
