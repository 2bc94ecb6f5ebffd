#include "corvanectl/same_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/scratch_directory.h"

namespace corvane::ctl {
namespace {

const Endpoint here{"127.0.0.1", 1, 1};
const Endpoint elsewhere{"192.0.2.1", 1, 1};

TEST(CompareFiles, KnowsAFileByAnotherSpellingOfItsName) {
    EXPECT_EQ(compareFiles("/a/./b", "/a//b", elsewhere), Sameness::Same);
    EXPECT_EQ(compareFiles("/a/b", "/A/B", elsewhere), Sameness::Same);
    EXPECT_EQ(compareFiles("/a/b", "/a/c", elsewhere), Sameness::Unknown);
}

TEST(CompareFiles, AsksTheSystemOfTheServersMachine) {
    const test::ScratchDirectory scratch;
    const std::string file = scratch.file("f", "x");
    const std::string upper = scratch.file("g", "x");
    const std::string link = file + "link";
    ASSERT_EQ(::symlink(file.c_str(), link.c_str()), 0);
    EXPECT_EQ(compareFiles(file, link, here), Sameness::Same);
    EXPECT_EQ(compareFiles(file, link, elsewhere), Sameness::Unknown);
    EXPECT_EQ(compareFiles(file, upper, here), Sameness::Different);
    EXPECT_EQ(compareFiles(file, upper + "none", here), Sameness::Unknown);
}

}  // namespace
}  // namespace corvane::ctl
