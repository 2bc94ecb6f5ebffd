#include "support/scratch_directory.h"

#include <gtest/gtest.h>

namespace corvane::test {
namespace {

TEST(ReadFile, GivesTheBytes) {
    const ScratchDirectory scratch;
    const std::string path = scratch.file("file", std::string("a\0\n", 3));
    EXPECT_EQ(readFile(path), std::string("a\0\n", 3));
}

TEST(ReadFile, GivesNothingOfWhatIsNotThere) {
    const ScratchDirectory scratch;
    EXPECT_EQ(readFile(scratch / "missing"), "");
}

TEST(ReadFile, GivesNothingOfWhatOpensButCannotBeRead) {
    EXPECT_EQ(readFile("/proc/self/mem"), "");  // like the files of a process that ends meanwhile
    EXPECT_EQ(readFile("/"), "");
}

}  // namespace
}  // namespace corvane::test
