#include "text/strings.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "text/exception.h"

namespace corvane {
namespace {

using Pieces = std::vector<std::string>;

[[gnu::format(printf, 2, 3)]] void formatTwice(std::string& out, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    _formatvl(fmt, args, out);
    out = formatvl(fmt, args) + "|" + out;
    va_end(args);
}

TEST(Format, FollowsTheRulesOfPrintf) {
    EXPECT_EQ(format("%s=%d, %05.1f %%", "a", -3, 2.25), "a=-3, 002.2 %");
    EXPECT_EQ(format("plain"), "plain");
    EXPECT_EQ(format("%s", ""), "");
}

TEST(Format, KeepsTextsAroundAndFarBeyondTheFirstBuffer) {
    for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 2048U, 100000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(format("%s", text.c_str()), text);
        EXPECT_EQ(format("<%s>", text.c_str()), "<" + text + ">");
    }
}

TEST(Format, FromAnArgumentListLeavesTheListUsable) {
    std::string out = "before";
    formatTwice(out, "%d-%s", 7, "seven");
    EXPECT_EQ(out, "7-seven|7-seven");
}

TEST(Format, OfAnUnconvertibleArgumentThrowsAndDoesNotGrowForever) {
    const std::wstring notACharacter(1, static_cast<wchar_t>(0x7FFFFFFF));
    EXPECT_THROW(format("%ls", notACharacter.c_str()), Exception);
}

TEST(ToString, GivesDecimalText) {
    EXPECT_EQ(toString(0), "0");
    EXPECT_EQ(toString(-42), "-42");
    const long largest = std::numeric_limits<long>::max();
    EXPECT_EQ(toLong(toString(largest), 0), largest);
}

TEST(ToLong, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(toLong("42", 7), 42);
    EXPECT_EQ(toLong("42x", 7), 42);
    EXPECT_EQ(toLong(" \t\n-3 4", 7), -3);
    EXPECT_EQ(toLong("+5", 7), 5);
    EXPECT_EQ(toLong("010", 7), 10);
    EXPECT_EQ(toLong("0x10", 7), 0);
    EXPECT_EQ(toLong(std::string("42x"), 7), 42);
}

TEST(ToLong, GivesTheDefaultWithoutADigit) {
    EXPECT_EQ(toLong("x", 7), 7);
    EXPECT_EQ(toLong("", 7), 7);
    EXPECT_EQ(toLong("- 1", 7), 7);
    EXPECT_EQ(toLong(nullptr, 7), 7);
    EXPECT_EQ(toLong(std::string(), 7), 7);
}

TEST(ToLong, StopsAtTheLimits) {
    EXPECT_EQ(toLong("99999999999999999999999", 7), std::numeric_limits<long>::max());
    EXPECT_EQ(toLong("-99999999999999999999999", 7), std::numeric_limits<long>::min());
}

TEST(ToBool, KnowsTheTwoWords) {
    EXPECT_TRUE(toBool("true", false));
    EXPECT_FALSE(toBool("false", true));
    EXPECT_TRUE(toBool(std::string("true"), false));
    EXPECT_FALSE(toBool(std::string("false"), true));
}

TEST(ToBool, TakesNumbers) {
    EXPECT_TRUE(toBool("1", false));
    EXPECT_TRUE(toBool("-3", false));
    EXPECT_TRUE(toBool("2x", false));
    EXPECT_FALSE(toBool("0", true));
    EXPECT_FALSE(toBool("0true", true));
}

TEST(ToBool, GivesTheDefaultForOtherTexts) {
    for (const char* const text : {"yes", "TRUE", "on", "True", " true", "true ", ""}) {
        EXPECT_TRUE(toBool(text, true)) << text;
        EXPECT_FALSE(toBool(text, false)) << text;
        EXPECT_TRUE(toBool(std::string(text), true)) << text;
    }
    EXPECT_TRUE(toBool(nullptr, true));
    EXPECT_FALSE(toBool(nullptr, false));
}

TEST(Whitespace, HasItsFiveCharactersInOrder) {
    EXPECT_EQ(whitespace, std::string("\x20\x09\x0A\x0D\x03"));
}

TEST(Trim, DropsTheDefaultSetAtBothEnds) {
    EXPECT_EQ(trim(" a b "), "a b");
    EXPECT_EQ(trim("\x03\t\r\n a\x03z \x03"), "a\x03z");
    EXPECT_EQ(trim("a"), "a");
    EXPECT_EQ(trim("\va\f"), "\va\f");
}

TEST(Trim, KeepsAStringThatHasOnlyBlanks) {
    EXPECT_EQ(trim("   "), "   ");
    EXPECT_EQ(trim("\x03"), "\x03");
    EXPECT_EQ(trim(""), "");
}

TEST(Trim, TakesAnotherSet) {
    EXPECT_EQ(trim("/a/ /", "/"), "a/ ");
    EXPECT_EQ(trim("//", "/"), "//");
    EXPECT_EQ(trim(" a ", ""), " a ");
}

TEST(Concatenate, PutsTextsOfAnyKindTogether) {
    EXPECT_EQ(concatenate("a", std::string("bc"), std::string_view(), std::string_view("d\0e", 3)),
              std::string("abcd\0e", 6));
    EXPECT_EQ(concatenate(""), "");
}

TEST(StrExplode, KeepsEmptyPieces) {
    EXPECT_EQ(strExplode("a,,b", ","), (Pieces{"a", "", "b"}));
    EXPECT_EQ(strExplode("a,", ","), (Pieces{"a", ""}));
    EXPECT_EQ(strExplode(",a", ","), (Pieces{"", "a"}));
    EXPECT_EQ(strExplode("abc", ","), (Pieces{"abc"}));
    EXPECT_EQ(strExplode("", ","), (Pieces{""}));
}

TEST(StrExplode, MatchesAnyCharacterOfTheSeparatorAndSkipsItsLength) {
    EXPECT_EQ(strExplode("a, b", ", "), (Pieces{"a", "b"}));
    EXPECT_EQ(strExplode("a b,cd", ", "), (Pieces{"a", "", "d"}));
    EXPECT_EQ(strExplode("a;xyb", "<;>"), (Pieces{"a", "b"}));
}

TEST(StrExplode, EndsWhenTheSkipPassesTheEnd) {
    EXPECT_EQ(strExplode("a,", ", "), (Pieces{"a", ""}));
    EXPECT_EQ(strExplode(",", ",,,,"), (Pieces{"", ""}));
}

TEST(StrExplode, WithoutSeparatorGivesOnePiece) {
    EXPECT_EQ(strExplode("a,b", ""), (Pieces{"a,b"}));
}

TEST(StrImplde, PutsTheSeparatorBetweenNeighbours) {
    EXPECT_EQ(strImplde({"a", "b", "", "c"}, ", "), "a, b, , c");
    EXPECT_EQ(strImplde({"a"}, ","), "a");
    EXPECT_EQ(strImplde({}, ","), "");
    EXPECT_EQ(strImplde({"", ""}, ","), ",");
}

TEST(StrImplde, UndoesStrExplodeWithOneCharacter) {
    for (const char* const text : {"a,,b", ",", "", "a,", "abc"}) {
        EXPECT_EQ(strImplde(strExplode(text, ","), ","), text);
    }
}

TEST(Strreplace, ReplacesEveryOccurrenceOfOneCharacter) {
    EXPECT_EQ(strreplace("a/b/c", "/", "\\"), "a\\b\\c");
    EXPECT_EQ(strreplace("//", "/", ""), "");
    EXPECT_EQ(strreplace("abc", "/", "x"), "abc");
    EXPECT_EQ(strreplace("", "/", "x"), "");
    EXPECT_EQ(strreplace("abc", "", "x"), "abc");
}

TEST(Strreplace, DoesNotSearchTheInsertedText) {
    EXPECT_EQ(strreplace("a&b&", "&", "&amp;"), "a&amp;b&amp;");
    EXPECT_EQ(strreplace("aa", "a", "aa"), "aaaa");
}

TEST(Strreplace, MatchesAnyCharacterOfALongerTextAndReplacesItsLength) {
    EXPECT_EQ(strreplace("xbcy", "ab", "-"), "x-y");
    EXPECT_EQ(strreplace("abab", "ab", "c"), "cc");
    EXPECT_EQ(strreplace("xxb", "ab", "--"), "xx--");
}

TEST(StartsWith, ComparesTheFirstCharacters) {
    EXPECT_TRUE(startsWith("http://x", "http:"));
    EXPECT_TRUE(startsWith("a", "a"));
    EXPECT_TRUE(startsWith("a", ""));
    EXPECT_FALSE(startsWith("ab", "abc"));
    EXPECT_FALSE(startsWith("Http:", "http:"));
}

TEST(EndsWith, ComparesTheLastCharacters) {
    EXPECT_TRUE(endsWith("movie.swf", ".swf"));
    EXPECT_TRUE(endsWith("a", "a"));
    EXPECT_TRUE(endsWith("", ""));
    EXPECT_FALSE(endsWith("swf", ".swf"));
    EXPECT_FALSE(endsWith("movie.SWF", ".swf"));
}

}  // namespace
}  // namespace corvane
