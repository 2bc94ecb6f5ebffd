#include "cmdl/options.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane::cmdl {
namespace {

Options someOptions() {
    Options options;
    options.addOption("v", "verbose", "say more", true, true);
    options.addOption({"o", "output", "where to write", false, "<file>", false});
    options.addOption("n", "number of lines", false, true);
    options.addOption("", "version", "show the version", true, true);
    return options;
}

std::string longNameMatching(const Options& options, const char* text) {
    const Option* const match = options.matchOption(text, false);
    return match == nullptr ? "none" : match->longName;
}

TEST(CommandLineException, ShowsTheIndexOnlyWhenThereIsOne) {
    EXPECT_STREQ(CommandLineException("it broke").what(), "CommandLineException: it broke");
    EXPECT_STREQ(CommandLineException("it broke", 3).what(),
                 "CommandLineException: it broke [arg 3]");
    EXPECT_THROW(throw CommandLineException("it broke"), Exception);
}

TEST(Option, IsNamedByItsShortNameElseByItsLongName) {
    EXPECT_EQ((Option{"v", "verbose", "", true, "", true}.getOpt()), "v");
    EXPECT_EQ((Option{"", "verbose", "", true, "", true}.getOpt()), "verbose");
}

TEST(Option, FindsTheValueBehindTheFirstEqualsSign) {
    EXPECT_STREQ(Option::getVal("--a=b=c"), "b=c");
    EXPECT_STREQ(Option::getVal("--a="), "");
    EXPECT_EQ(Option::getVal("--a"), nullptr);
}

TEST(Options, RefuseAnOptionWithoutNames) {
    Options options;
    try {
        options.addOption("", "", "nothing", true, true);
        FAIL() << "accepted";
    } catch (const CommandLineException& exception) {
        EXPECT_EQ(exception.message,
                  "CommandLineException: Short and long options cannot be empty at the same time");
    }
    EXPECT_THROW(options.addOption("", "nothing", true, true), CommandLineException);
    EXPECT_TRUE(options.declared().empty());
}

TEST(Options, KeepWhatIsDeclaredInOrder) {
    const Options options = someOptions();
    ASSERT_EQ(options.declared().size(), 4U);
    EXPECT_EQ(options.declared()[1].valueName, "<file>");
    const Option& third = options.declared()[2];
    EXPECT_EQ(third.shortName, "n");
    EXPECT_EQ(third.longName, "");
    EXPECT_EQ(third.description, "number of lines");
    EXPECT_FALSE(third.isBool);
    EXPECT_TRUE(third.optional);
    EXPECT_EQ(third.valueName, "");
}

TEST(MatchOption, AcceptsAbbreviationsAndTakesTheFirstDeclared) {
    const Options options = someOptions();
    EXPECT_EQ(longNameMatching(options, "verbose"), "verbose");
    EXPECT_EQ(longNameMatching(options, "ver"), "verbose");
    EXPECT_EQ(longNameMatching(options, "vers"), "version");
    EXPECT_EQ(longNameMatching(options, "verbosely"), "none");
    EXPECT_EQ(longNameMatching(options, "x"), "none");
}

TEST(MatchOption, LooksOnlyAtTheNameBeforeTheEqualsSign) {
    const Options options = someOptions();
    EXPECT_EQ(longNameMatching(options, "out=verbose"), "output");
    EXPECT_EQ(longNameMatching(options, "=output"), "verbose");
}

TEST(MatchOption, MatchesAnEmptyNameWithTheFirstOption) {
    EXPECT_EQ(longNameMatching(someOptions(), ""), "verbose");
    EXPECT_EQ(longNameMatching(Options(), ""), "none");
}

TEST(MatchOption, KeepsShortAndLongNamesApart) {
    const Options options = someOptions();
    EXPECT_EQ(options.matchOption("n", true), &options.declared()[2]);
    EXPECT_EQ(options.matchOption("n", false), nullptr);
    EXPECT_EQ(options.matchOption("verbose", true), nullptr);
}

TEST(Syntax, ListsNamesValuesAndDescriptions) {
    EXPECT_EQ(someOptions().syntax("prog"),
              "prog [-v, --verbose] -o, --output <file> [-n <value>] [--version]\n"
              "   -v, --verbose - say more\n"
              "   -o, --output <file> - where to write\n"
              "   -n <value> - number of lines\n"
              "   --version - show the version\n");
}

TEST(Syntax, HasNoBlankInFrontWithoutAProgram) {
    Options options;
    options.addOption("v", "say more", true, false);
    EXPECT_EQ(options.syntax(""), "-v\n   -v - say more\n");
}

TEST(Syntax, WithoutOptionsIsOneLine) {
    EXPECT_EQ(Options().syntax("prog"), "prog \n");
    EXPECT_EQ(Options().syntax(""), "\n");
}

TEST(AppendString, PutsTheSeparatorOnlyBetweenTexts) {
    EXPECT_EQ(appendString("a", "b", ", "), "a, b");
    EXPECT_EQ(appendString("a", "", ", "), "a");
    EXPECT_EQ(appendString("", "b", ", "), "b");
    EXPECT_EQ(appendString("", "", ", "), "");
}

}  // namespace
}  // namespace corvane::cmdl
