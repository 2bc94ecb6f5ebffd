#include "cvnwinfo/title.h"

#include <gtest/gtest.h>

#include <vector>

namespace corvane::wintool {
namespace {

using Titles = std::vector<std::string>;

TEST(ChooseTitle, PrefersTheExactTitleToABeginningAboveIt) {
    EXPECT_EQ(chooseTitle(Titles{"Player - movie", "Player", "Other"}, "Player"), 1U);
}

TEST(ChooseTitle, TakesTheTopmostOfEqualTitles) {
    EXPECT_EQ(chooseTitle(Titles{"Other", "Player", "Player"}, "Player"), 1U);
}

TEST(ChooseTitle, TakesTheTopmostThatBeginsSo) {
    EXPECT_EQ(chooseTitle(Titles{"Other", "Player 2", "Player 1"}, "Player"), 1U);
}

TEST(ChooseTitle, LooksOnlyAtTheBeginningAndAtTheCase) {
    EXPECT_EQ(chooseTitle(Titles{"My Player", "player", "Playe"}, "Player"), std::nullopt);
}

TEST(ChooseTitle, ComparesTextInUtf8) {
    EXPECT_EQ(chooseTitle(Titles{"F\xC3\xBCr", "F\xFCr"}, "F\xC3\xBC"), 0U);
}

TEST(ChooseTitle, FindsNothingForAnEmptyTitle) {
    EXPECT_EQ(chooseTitle(Titles{"", "Player"}, ""), std::nullopt);
    EXPECT_EQ(chooseTitle(Titles{}, "Player"), std::nullopt);
}

TEST(Latin1ToUtf8, KeepsAsciiAndWidensTheRest) {
    EXPECT_EQ(latin1ToUtf8("Player 9"), "Player 9");
    EXPECT_EQ(latin1ToUtf8("\x80\xBF\xC0\xE9\xFF"), "\xC2\x80\xC2\xBF\xC3\x80\xC3\xA9\xC3\xBF");
}

TEST(InQuotes, PutsShortTextIntoQuotes) {
    EXPECT_EQ(inQuotes("Player"), "'Player'");
    EXPECT_EQ(inQuotes(std::string(64, 'a')), "'" + std::string(64, 'a') + "'");
}

TEST(InQuotes, CutsLongText) {
    EXPECT_EQ(inQuotes(std::string(65, 'a')), "'" + std::string(61, 'a') + "...'");
}

TEST(InQuotes, CutsBetweenCharacters) {
    const std::string text = std::string(60, 'a') + "\xE2\x82\xAC" + std::string(60, 'b');
    EXPECT_EQ(inQuotes(text), "'" + std::string(60, 'a') + "...'");
}

TEST(InQuotes, CutsTextThatIsNotUtf8) { EXPECT_EQ(inQuotes(std::string(100, '\x80')), "'...'"); }

TEST(InQuotes, HidesControlCharacters) {
    EXPECT_EQ(inQuotes("a\nb\x1B"
                       "c\x7F"),
              "'a?b?c?'");
}

}  // namespace
}  // namespace corvane::wintool
