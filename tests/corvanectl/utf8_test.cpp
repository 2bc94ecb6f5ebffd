#include "corvanectl/utf8.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

TEST(Utf8Length, IsThatOfTheFirstCharacter) {
    EXPECT_EQ(utf8Length("ab"), 1U);
    EXPECT_EQ(utf8Length(std::string_view("\0", 1)), 1U);
    EXPECT_EQ(utf8Length("\xc2\x80"), 2U);
    EXPECT_EQ(utf8Length("\xe0\xa0\x80x"), 3U);
    EXPECT_EQ(utf8Length("\xf4\x8f\xbf\xbf"), 4U);
}

TEST(Utf8Length, IsNoneWhereThereIsNoCharacter) {
    for (const char* text :
         {"\x80", "\xc1\xbf", "\xc3", "\xc3z", "\xe0\x9f\xbf", "\xe2\x82", "\xed\xa0\x80",
          "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"}) {
        EXPECT_EQ(utf8Length(text), 0U) << text;
    }
}

TEST(DecodeUtf8, GivesTheCharacter) {
    EXPECT_EQ(decodeUtf8("A"), U'A');
    EXPECT_EQ(decodeUtf8("\xc3\xa9"), U'\u00e9');
    EXPECT_EQ(decodeUtf8("\xe2\x82\xac"), U'\u20ac');
    EXPECT_EQ(decodeUtf8("\xf0\x9f\x98\x80"), U'\U0001f600');
}

TEST(IsUtf8, WantsNothingButCharacters) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("a\xc3\xa9"));
    EXPECT_FALSE(isUtf8("a\xc3"));
    EXPECT_FALSE(isUtf8("\xff"));
}

}  // namespace
}  // namespace corvane::ctl
