#include "fileutil/paths.h"

#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace corvane {
namespace {

using Lines = std::vector<std::string>;

TEST(SlashPath, AddsOneSeparatorWhereThereIsNone) {
    EXPECT_EQ(slashPath(""), "");
    EXPECT_EQ(slashPath("a"), "a/");
    EXPECT_EQ(slashPath("a/"), "a/");
    EXPECT_EQ(slashPath("a\\"), "a\\");
    EXPECT_EQ(slashPath("/"), "/");
}

TEST(UnslashPath, RemovesOneSeparatorOnly) {
    EXPECT_EQ(unslashPath(""), "");
    EXPECT_EQ(unslashPath("a"), "a");
    EXPECT_EQ(unslashPath("a/"), "a");
    EXPECT_EQ(unslashPath("a\\"), "a");
    EXPECT_EQ(unslashPath("a//"), "a/");
    EXPECT_EQ(unslashPath("/"), "");
}

TEST(CorrectPath, TurnsBackslashesAndNothingElse) {
    EXPECT_EQ(correctPath("\\a\\\\b//c/../."), "/a//b//c/../.");
    EXPECT_EQ(correctPath(""), "");
}

TEST(CorrectDirectoryPath, TurnsBackslashesAndEndsWithASeparator) {
    EXPECT_EQ(correctDirectoryPath("a\\b"), "a/b/");
    EXPECT_EQ(correctDirectoryPath("a\\"), "a/");
    EXPECT_EQ(correctDirectoryPath("/"), "/");
    EXPECT_EQ(correctDirectoryPath(""), "");
}

TEST(CorrectPathInvalidChars, RemovesQuestionMarksAndAsterisksAndWarnsOnce) {
    const test::LogCapture log;
    EXPECT_EQ(correctPathInvalidChars("a?b*c"), "abc");
    EXPECT_EQ(log.lines(), Lines{"WARN corvane.fileutil.correctPathInvalidChars path 'a?b*c' has "
                                 "invalid char(s) and was converted to 'abc'"});
}

TEST(CorrectPathInvalidChars, KeepsAllOtherCharactersAndIsSilent) {
    const test::LogCapture log;
    EXPECT_EQ(correctPathInvalidChars("c:/<a>|\"%s\""), "c:/<a>|\"%s\"");
    EXPECT_EQ(correctPathInvalidChars(""), "");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST(CorrectPathInvalidChars, CanLeaveNothing) {
    const test::LogCapture log;
    EXPECT_EQ(correctPathInvalidChars("?*?"), "");
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(IsFullPath, LooksAtTheFirstCharacter) {
    EXPECT_TRUE(isFullPath("/dir"));
    EXPECT_TRUE(isFullPath("\\dir"));
    EXPECT_FALSE(isFullPath("c:/dir"));
    EXPECT_FALSE(isFullPath(""));
    EXPECT_FALSE(isFullPath("dir/"));
}

TEST(GetFullPath, PutsTheCurrentDirectoryBeforeARelativePath) {
    EXPECT_EQ(getFullPath("/dir\\x"), "/dir\\x");
    EXPECT_EQ(getFullPath("c:/dir"), getCurrentDirectory() + "c:/dir");
    EXPECT_EQ(getFullPath("a\\b"), getCurrentDirectory() + "a/b");
}

TEST(GetDirectory, IsAllUpToTheLastSlash) {
    EXPECT_EQ(getDirectory("/a/b"), "/a/");
    EXPECT_EQ(getDirectory("dir/"), "dir/");
    EXPECT_EQ(getDirectory("name"), "name");
    EXPECT_EQ(getDirectory("a\\b"), "a\\b");
    EXPECT_EQ(getDirectory(""), "");
}

TEST(GetFileName, IsAllBehindTheLastSlash) {
    EXPECT_EQ(getFileName("/a/b.txt"), "b.txt");
    EXPECT_EQ(getFileName("dir/"), "");
    EXPECT_EQ(getFileName("name"), "name");
    EXPECT_EQ(getFileName("a\\b"), "a\\b");
}

TEST(GetExtension, IsTheTextBehindTheLastDotOfTheLastComponent) {
    EXPECT_EQ(getExtension("a/b.TXT"), "TXT");
    EXPECT_EQ(getExtension("a.tar.gz"), "gz");
    EXPECT_EQ(getExtension("dir.d/file"), "");
    EXPECT_EQ(getExtension("dir/."), "");
    EXPECT_EQ(getExtension("file."), "");
    EXPECT_EQ(getExtension(".profile"), "profile");
    EXPECT_EQ(getExtension("a/.profile"), "profile");
    EXPECT_EQ(getExtension(""), "");
    EXPECT_EQ(getExtension("plain"), "");
}

TEST(RemovePathParams, CutsAtTheLastQuestionMark) {
    EXPECT_EQ(removePathParams("a.swf?x=1?y"), "a.swf?x=1");
    EXPECT_EQ(removePathParams("a.swf?"), "a.swf");
    EXPECT_EQ(removePathParams("?x"), "");
    EXPECT_EQ(removePathParams("a.swf"), "a.swf");
}

}  // namespace
}  // namespace corvane
