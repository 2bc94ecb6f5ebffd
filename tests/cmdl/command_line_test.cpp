#include "cmdl/command_line.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace corvane::cmdl {
namespace {

class CommandLineTest : public testing::Test {
  protected:
    CommandLineTest() {
        options.addOption("v", "verbose", "say more", true, true);
        options.addOption("o", "output", "where to write", false, true);
        options.addOption("", "alpha", "an angle", false, true);
        options.addOption("", "alphabet", "the letters", false, true);
    }

    void parse(std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "prog");
        line.parse(options, static_cast<int>(arguments.size()), arguments.data());
    }

    std::string failureOf(const std::vector<const char*>& arguments) {
        try {
            parse(arguments);
        } catch (const CommandLineException& exception) {
            return exception.message;
        }
        return "none";
    }

    Options options;
    CommandLine line;
};

TEST_F(CommandLineTest, KeepsTheProgramAndThePositionalArguments) {
    parse({"one", "", "two"});
    EXPECT_EQ(line.getProg(), "prog");
    ASSERT_EQ(line.getArgCount(), 3U);
    EXPECT_EQ(line.getArg(0), "one");
    EXPECT_EQ(line.getArg(1), "");
    EXPECT_EQ(line.getArg(2), "two");
    EXPECT_THROW(line.getArg(3), std::out_of_range);
}

TEST_F(CommandLineTest, AcceptsArgumentsOfMain) {
    std::string program = "prog";
    std::vector<char*> arguments = {program.data(), nullptr};
    line.parse(options, 1, arguments.data());
    EXPECT_EQ(line.getProg(), "prog");
    line.parse(options, 0, arguments.data() + 1);
    EXPECT_EQ(line.getProg(), "");
}

TEST_F(CommandLineTest, StoresAFlagAsTheEmptyString) {
    parse({"-v"});
    EXPECT_TRUE(line.hasOption("v"));
    EXPECT_EQ(line.getOptionValue("v", "absent"), CommandLine::EMPTY);
    EXPECT_FALSE(line.hasOption("verbose"));
}

TEST_F(CommandLineTest, IgnoresTheValueOfAFlag) {
    parse({"-v=1", "x"});
    EXPECT_EQ(line.getOptionValue("v", "absent"), "");
    EXPECT_EQ(line.getArgCount(), 1U);
}

TEST_F(CommandLineTest, GivesTheDefaultForAnAbsentOption) {
    parse({});
    EXPECT_FALSE(line.hasOption("o"));
    EXPECT_EQ(line.getOptionValue("o", "absent"), "absent");
}

TEST_F(CommandLineTest, TakesTheValueBehindTheEqualsSign) {
    parse({"-o=a=b"});
    EXPECT_EQ(line.getOptionValue("o", "absent"), "a=b");
    parse({"--output="});
    EXPECT_EQ(line.getOptionValue("o", "absent"), "");
    parse({"-o=-v"});
    EXPECT_EQ(line.getOptionValue("o", "absent"), "-v");
}

TEST_F(CommandLineTest, TakesTheValueOfTheNextArgument) {
    parse({"-o", "file", "rest"});
    EXPECT_EQ(line.getOptionValue("o", "absent"), "file");
    ASSERT_EQ(line.getArgCount(), 1U);
    EXPECT_EQ(line.getArg(0), "rest");
    parse({"--output", ""});
    EXPECT_EQ(line.getOptionValue("o", "absent"), "");
}

TEST_F(CommandLineTest, SetsTheFirstOptionThatAnAbbreviationFits) {
    parse({"--al=5"});
    EXPECT_EQ(line.getOptionValue("alpha", "absent"), "5");
    parse({"--alphab=5"});
    EXPECT_EQ(line.getOptionValue("alphabet", "absent"), "5");
}

TEST_F(CommandLineTest, KeepsTheLastValueOfARepeatedOption) {
    parse({"-o", "a", "--output=b"});
    EXPECT_EQ(line.getOptionValue("o", "absent"), "b");
}

TEST_F(CommandLineTest, TakesOptionsAfterArgumentsToo) {
    parse({"one", "-v", "two"});
    EXPECT_TRUE(line.hasOption("v"));
    EXPECT_EQ(line.getArgCount(), 2U);
}

TEST_F(CommandLineTest, MatchesLoneDashesWithTheFirstOption) {
    parse({"-"});
    EXPECT_TRUE(line.hasOption("v"));
    parse({"--", "x"});
    EXPECT_TRUE(line.hasOption("v"));
    EXPECT_EQ(line.getArgCount(), 1U);
}

TEST_F(CommandLineTest, ReplacesTheEarlierResult) {
    parse({"-v", "one"});
    parse({"two", "three"});
    EXPECT_FALSE(line.hasOption("v"));
    ASSERT_EQ(line.getArgCount(), 2U);
    EXPECT_EQ(line.getArg(0), "two");
}

TEST_F(CommandLineTest, RefusesAnUnknownOption) {
    EXPECT_EQ(failureOf({"x", "-q=1"}),
              "CommandLineException: Unrecognized option '-q=1'  [arg 2]");
    EXPECT_EQ(failureOf({"--quiet"}),
              "CommandLineException: Unrecognized option '--quiet'  [arg 1]");
    EXPECT_EQ(failureOf({"-alpha", "1"}),
              "CommandLineException: Unrecognized option '-alpha'  [arg 1]");
}

TEST_F(CommandLineTest, RefusesAValueOptionAtTheEnd) {
    EXPECT_EQ(failureOf({"-v", "-o"}),
              "CommandLineException: no value for non bool option '-o' [arg 2]");
    EXPECT_FALSE(line.hasOption("o"));
    EXPECT_TRUE(line.hasOption("v"));
}

TEST_F(CommandLineTest, RefusesAnOptionAsValue) {
    EXPECT_EQ(failureOf({"-o", "-x"}),
              "CommandLineException: value '-x' for option '-o' is option too [arg 1]");
}

TEST_F(CommandLineTest, RefusesALineWithoutARequiredOption) {
    options.addOption("r", "required", "must be given", true, false);
    options.addOption("", "needed", "must be given too", true, false);
    EXPECT_EQ(failureOf({}), "CommandLineException: lack of required option 'r' ");
    EXPECT_EQ(failureOf({"-r"}), "CommandLineException: lack of required option 'needed' ");
    EXPECT_EQ(failureOf({"--required", "--needed"}), "none");
}

}  // namespace
}  // namespace corvane::cmdl
