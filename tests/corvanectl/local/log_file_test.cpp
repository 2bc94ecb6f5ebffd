#include "corvanectl/local/log_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/scratch_directory.h"

namespace corvane::ctl {
namespace {

constexpr std::size_t plenty = 1000;

TEST(ReadLog, GivesWhatFollowsAPosition) {
    const test::ScratchDirectory scratch;
    const std::string path = scratch.file("log", "one\n");
    const auto end = endOfLog(path);
    ASSERT_TRUE(end.has_value());
    EXPECT_EQ(readLog(path, *end, plenty), "");
    std::ofstream(path, std::ios::app) << "two\nthree\n";
    EXPECT_EQ(readLog(path, *end, plenty), "two\nthree\n");
    EXPECT_EQ(readLog(path, {}, plenty), "one\ntwo\nthree\n");
}

TEST(ReadLog, GivesAllOfAFileThatWasTruncatedOrReplaced) {
    const test::ScratchDirectory scratch;
    const std::string path = scratch.file("log", "a long line\n");
    const auto end = endOfLog(path);
    scratch.file("log", "new\n");
    EXPECT_EQ(readLog(path, *end, plenty), "new\n");
    scratch.file("other", "another file that is longer\n");
    std::filesystem::rename(scratch / "other", path);
    EXPECT_EQ(readLog(path, *end, plenty), "another file that is longer\n");
}

TEST(ReadLog, GivesNoMoreThanTheLastWholeLines) {
    const test::ScratchDirectory scratch;
    const std::string path = scratch.file("log", "one\ntwo\nthree\n");
    EXPECT_EQ(readLog(path, {}, 10), "two\nthree\n");
    EXPECT_EQ(readLog(path, {}, 9), "three\n");
    EXPECT_EQ(readLog(path, {}, 3), "");
}

TEST(ReadLog, ReadsRegularFilesOnly) {
    const test::ScratchDirectory scratch;
    EXPECT_EQ(readLog(scratch / "none", {}, plenty), std::nullopt);
    EXPECT_EQ(readLog(scratch.path(), {}, plenty), std::nullopt);
    ASSERT_EQ(::mkfifo((scratch / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readLog(scratch / "pipe", {}, plenty), std::nullopt);
    EXPECT_EQ(endOfLog(scratch / "pipe"), std::nullopt);
    EXPECT_EQ(endOfLog(scratch / "none"), std::nullopt);
}

}  // namespace
}  // namespace corvane::ctl
