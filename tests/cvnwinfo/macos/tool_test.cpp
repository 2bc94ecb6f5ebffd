// The whole program for macOS: what it prints, and with which status it ends.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/child.h"
#include "support/environment.h"

namespace corvane {
namespace {

struct Outcome {
    int status = -1;
    std::string output;
    std::string errors;
};

// Runs the tool where the screen is the one of this name, see tool_world.cpp.
Outcome run(const std::string& world, std::vector<std::string> arguments) {
    const test::EnvironmentVariable variable("CVNWINFO_WORLD", world);
    arguments.insert(arguments.begin(), CVNWINFO_PROGRAM);
    std::vector<char*> words;
    for (std::string& argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);
    Child child(Child::Capture::OutputAndErrors, Child::Group::Shared,
                [&words] { ::execv(words.front(), words.data()); });
    EXPECT_TRUE(child.waitFor({}));
    return {child.exitCode(), child.wholeOutput({}), child.wholeErrors({})};
}

void expectFailure(const Outcome& outcome, int status, const std::string& message) {
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.errors, "cvnwinfo: " + message + "\n");
    EXPECT_EQ(outcome.output, "");
}

TEST(MacTool, PrintsTheRectangleOfAWindow) {
    const Outcome outcome = run("", {"-g", "-n", "Player"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "-10,20,550,428\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(MacTool, PrintsTheSizeOfTheMainDisplay) {
    const Outcome outcome = run("untrusted", {"-a"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "1440,900\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(MacTool, MovesAWindowWithoutAWord) {
    const Outcome outcome = run("", {"-n", "Player", "-p", "-5,6", "-s", "640,480"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "");
}

TEST(MacTool, EndsWithOneLineAndStatusOneWhenItLacksThePermission) {
    expectFailure(run("untrusted", {"-g", "-n", "Player"}), 1,
                  "no permission to see and move windows: in System Settings > Privacy & Security "
                  "> Accessibility add the program that this one is started from, the terminal or, "
                  "where launchd starts it, the server 'corvane'");
}

TEST(MacTool, EndsWithOneLineAndStatusOneWhenNoWindowHasTheTitle) {
    expectFailure(run("", {"-n", "Browser"}), 1, "no window titled 'Browser'");
}

TEST(MacTool, EndsWithStatusTwoWhenTheCommandLineIsWrong) {
    expectFailure(run("", {"-g"}), 2,
                  "no window given: option -n TITLE is missing (see cvnwinfo --help)");
}

TEST(MacTool, GivesUpOnApplicationsThatDoNotAnswer) {
    expectFailure(run("stuck", {"-g", "-n", "Player"}), 1,
                  "the applications on the screen do not answer");
}

}  // namespace
}  // namespace corvane
