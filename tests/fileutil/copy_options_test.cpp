#include "fileutil/copy_options.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using Extensions = std::vector<std::string>;

TEST(CopyOptions, AllowsEverythingAtFirst) {
    const CopyOptions options;
    EXPECT_TRUE(options.recursive);
    EXPECT_TRUE(options.isAllowed("a.swf"));
    EXPECT_TRUE(options.isAllowed("readme"));
    EXPECT_TRUE(options.isAllowed(""));
}

TEST(CopyOptions, AddsTheTrimmedPiecesOfAListThatAreNotEmpty) {
    CopyOptions options;
    options.addExts(true, "swf, txt,,");
    EXPECT_EQ(options.includeExts, (Extensions{"swf", "txt"}));
    options.addExts(false, "\tjpg\r\x03,png");
    EXPECT_EQ(options.excludeExts, (Extensions{"jpg", "png"}));
    options.addExts(true, "");
    EXPECT_EQ(options.includeExts.size(), 2U);
}

TEST(CopyOptions, AddsASingleExtensionEvenWhenItIsEmpty) {
    CopyOptions options;
    options.addExt(true, " swf ");
    options.addExt(true, "");
    options.addExt(false, "");
    EXPECT_EQ(options.includeExts, (Extensions{"swf", ""}));
    EXPECT_EQ(options.excludeExts, (Extensions{""}));
}

TEST(CopyOptions, TakesOnlyTheIncludedExtensionsInTheirSpelling) {
    CopyOptions options;
    options.addExts(true, "swf, txt,,");
    EXPECT_TRUE(options.isAllowed("a.swf"));
    EXPECT_TRUE(options.isAllowed("dir/b.c.txt"));
    EXPECT_FALSE(options.isAllowed("a.SWF"));
    EXPECT_FALSE(options.isAllowed("readme"));
    EXPECT_FALSE(options.isAllowed("swf"));
}

TEST(CopyOptions, LeavesTheExcludedExtensions) {
    CopyOptions options;
    options.addExts(false, "jpg");
    EXPECT_FALSE(options.isAllowed("a.jpg"));
    EXPECT_TRUE(options.isAllowed("a.JPG"));
    EXPECT_TRUE(options.isAllowed("jpg"));
}

TEST(CopyOptions, ExcludesAlsoWhatIsIncluded) {
    CopyOptions options;
    options.addExts(true, "swf,jpg");
    options.addExts(false, "jpg");
    EXPECT_TRUE(options.isAllowed("a.swf"));
    EXPECT_FALSE(options.isAllowed("a.jpg"));
}

TEST(CopyOptions, TakesTheEmptyExtensionForAFileWithoutOne) {
    CopyOptions without;
    without.addExt(true, "");
    EXPECT_TRUE(without.isAllowed("readme"));
    EXPECT_FALSE(without.isAllowed("a.txt"));
    CopyOptions with;
    with.addExt(false, "");
    EXPECT_FALSE(with.isAllowed("readme"));
    EXPECT_TRUE(with.isAllowed("a.txt"));
}

}  // namespace
}  // namespace corvane
