#include "corvanectl/invocation.h"

#include <gtest/gtest.h>

#include <array>

#include "text/exception.h"

namespace corvane::ctl {
namespace {

using Mode = Invocation::Mode;

Invocation parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "corvanectl");
    return parseInvocation(static_cast<int>(arguments.size()), arguments.data());
}

TEST(ParseInvocation, HasTheServersDefaults) {
    const Invocation invocation = parse({"userDir"});
    EXPECT_EQ(invocation.mode, Mode::Request);
    EXPECT_EQ(invocation.endpoint.host, "127.0.0.1");
    EXPECT_EQ(invocation.endpoint.port, 54321);
    EXPECT_FALSE(invocation.xml);
    EXPECT_EQ(invocation.command, "userDir");
}

TEST(ParseInvocation, TakesOptionsInFrontOfTheCommand) {
    const Invocation invocation =
        parse({"--host", "localhost", "-p", "5000", "--timeout=3", "-x", "userDir", "desktop"});
    EXPECT_EQ(invocation.endpoint.host, "localhost");
    EXPECT_EQ(invocation.endpoint.port, 5000);
    EXPECT_EQ(invocation.endpoint.timeout, 3);
    EXPECT_TRUE(invocation.xml);
    EXPECT_FALSE(invocation.json);
    EXPECT_TRUE(parse({"--json", "userDir"}).json);
    EXPECT_EQ(invocation.parameters, std::vector<std::string>{"desktop"});
}

TEST(ParseInvocation, TakesAValueBehindAnEqualsSignOutOfTheSameArgument) {
    for (const char* option : {"-p=5000", "--port=5000"}) {
        const Invocation invocation = parse({option, "userDir", "desktop"});
        EXPECT_EQ(invocation.endpoint.port, 5000);
        EXPECT_EQ(invocation.command, "userDir");
        EXPECT_EQ(invocation.parameters, std::vector<std::string>{"desktop"});
    }
}

TEST(ParseInvocation, LeavesEverythingBehindTheCommandAlone) {
    const Invocation invocation = parse({"setWndPos", "1", "-10", "--xml", "--help"});
    EXPECT_EQ(invocation.mode, Mode::Request);
    EXPECT_FALSE(invocation.xml);
    EXPECT_EQ(invocation.parameters, (std::vector<std::string>{"1", "-10", "--xml", "--help"}));
}

TEST(ParseInvocation, TakesWhatStandsBehindTwoDashesForACommand) {
    const Invocation invocation = parse({"-p", "5000", "--", "listDir", "--", "-x"});
    EXPECT_EQ(invocation.mode, Mode::Request);
    EXPECT_EQ(invocation.endpoint.port, 5000);
    EXPECT_EQ(invocation.command, "listDir");
    EXPECT_EQ(invocation.parameters, (std::vector<std::string>{"--", "-x"}));
    EXPECT_EQ(parse({"--", "--help"}).command, "--help");
    EXPECT_EQ(parse({"-"}).command, "-");
    EXPECT_THROW(parse({"--"}), Exception);
}

TEST(ParseInvocation, TakesHelpBehindACommandForAQuestionWhenNothingElseIsThere) {
    const Invocation invocation = parse({"listDir", "--help"});
    EXPECT_EQ(invocation.command, "help");
    EXPECT_EQ(invocation.parameters, std::vector<std::string>{"listDir"});
    EXPECT_EQ(parse({"rename", "--help", "x"}).command, "rename");
}

TEST(ParseInvocation, TakesTheLongFormInFrontOfADirectoryOnly) {
    EXPECT_TRUE(parse({"-l", "listDir", "/"}).longListing);
    const Invocation invocation = parse({"listDir", "-l", "/"});
    EXPECT_TRUE(invocation.longListing);
    EXPECT_EQ(invocation.parameters, std::vector<std::string>{"/"});
    EXPECT_FALSE(parse({"listDir", "-l"}).longListing);
    EXPECT_FALSE(parse({"rename", "-l", "x"}).longListing);
}

TEST(ParseInvocation, TakesReplaceAsTheFirstParameterOfCopyAndRename) {
    for (const char* command : {"copy", "rename"}) {
        const Invocation invocation = parse({command, "--replace", "a", "b"});
        EXPECT_TRUE(invocation.replace);
        EXPECT_EQ(invocation.parameters, (std::vector<std::string>{"a", "b"}));
    }
    EXPECT_FALSE(parse({"copy", "a", "--replace"}).replace);
    EXPECT_FALSE(parse({"delete", "--replace"}).replace);
}

TEST(ParseInvocation, NeedsACommand) {
    EXPECT_THROW(parse({}), Exception);
    EXPECT_THROW(parse({"--port", "5000"}), Exception);
}

TEST(ParseInvocation, AsksForCommandsAtATerminal) {
    const std::array<const char*, 3> arguments{"corvanectl", "-p", "5000"};
    const Invocation invocation = parseInvocation(3, arguments.data(), {}, true);
    EXPECT_EQ(invocation.mode, Mode::Prompt);
    EXPECT_EQ(invocation.endpoint.port, 5000);
}

TEST(ParseInvocation, TakesWhatNoOptionSaysFromTheDefaults) {
    Invocation defaults;
    defaults.endpoint = {"192.0.2.1", 5000, 7};
    defaults.json = true;
    const std::array<const char*, 3> arguments{"corvanectl", "--port=1", "userDir"};
    const Invocation invocation = parseInvocation(3, arguments.data(), defaults);
    EXPECT_EQ(invocation.endpoint.host, "192.0.2.1");
    EXPECT_EQ(invocation.endpoint.port, 1);
    EXPECT_EQ(invocation.endpoint.timeout, 7);
    EXPECT_TRUE(invocation.json);
}

TEST(ParseInvocation, TakesTheWordsToComplete) {
    const Invocation invocation = parse({"--complete", "--port", "1", ""});
    EXPECT_EQ(invocation.mode, Mode::Complete);
    EXPECT_EQ(invocation.parameters, (std::vector<std::string>{"--port", "1", ""}));
}

TEST(ParseInvocation, RefusesValuesThatAreNoNumbersInRange) {
    for (const char* option : {"--port=0", "--port=65536", "--port=12x", "--port=", "--timeout=-1",
                               "--timeout=x", "--timeout=1000001"}) {
        EXPECT_THROW(parse({option, "userDir"}), Exception) << option;
    }
}

TEST(ParseInvocation, TakesTheFirstAndTheLastNumberOfARange) {
    EXPECT_EQ(parse({"--port=1", "userDir"}).endpoint.port, 1);
    EXPECT_EQ(parse({"--port=65535", "userDir"}).endpoint.port, 65535);
    EXPECT_EQ(parse({"--timeout=0", "userDir"}).endpoint.timeout, 0);
    EXPECT_EQ(parse({"-t", "1000000", "userDir"}).endpoint.timeout, 1'000'000);
}

TEST(ParseInvocation, TakesWhatFollowsAnOptionWithItsValueForTheCommand) {
    const Invocation invocation = parse({"--port=5000", "userDir", "desktop"});
    EXPECT_EQ(invocation.command, "userDir");
    EXPECT_EQ(invocation.parameters, std::vector<std::string>{"desktop"});
}

TEST(ParseInvocation, RefusesUnknownOptionsAndMissingValues) {
    EXPECT_THROW(parse({"--nothing", "userDir"}), Exception);
    EXPECT_THROW(parse({"--port"}), Exception);
}

TEST(ParseInvocation, AsksForHelpVersionAndWords) {
    EXPECT_EQ(parse({"--help"}).mode, Mode::Help);
    EXPECT_EQ(parse({"-v", "userDir"}).mode, Mode::Version);
    EXPECT_EQ(parse({"--complete"}).mode, Mode::Complete);
}

TEST(HelpText, NamesEveryOptionAndCommand) {
    const std::string help = helpText();
    for (const char* text : {"--host", "--port", "--timeout", "--xml", "--version", "--json",
                             "   help [command]\n", "   write file < data\n", "   shutdown\n"}) {
        EXPECT_NE(help.find(text), std::string::npos) << text;
    }
    EXPECT_EQ(help.find("--complete"), std::string::npos);
}

}  // namespace
}  // namespace corvane::ctl
