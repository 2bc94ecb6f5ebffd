#include "corvanectl/local_command.h"

#include <gtest/gtest.h>

#include <sstream>

#include "corvanectl/run_command.h"
#include "support/thrown.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

std::string failureOf(const std::string& command, const std::vector<std::string>& parameters) {
    Invocation invocation;
    invocation.command = command;
    invocation.parameters = parameters;
    return test::thrownBy<Exception>([&] { runCommand(invocation); });
}

TEST(FindLocalCommand, LeavesTheServersCommandsToTheServer) {
    ASSERT_NE(findLocalCommand("help", 0), nullptr);
    EXPECT_EQ(findLocalCommand("help", 0)->usage.name, "help");
    EXPECT_EQ(findLocalCommand("Help", 0), nullptr);
    EXPECT_EQ(findLocalCommand("userDir", 0), nullptr);
    EXPECT_EQ(findLocalCommand("log", 3), nullptr);
}

TEST(RunCommand, RefusesTheWrongNumberOfParametersOfALocalCommand) {
    EXPECT_EQ(failureOf("help", {"a", "b"}), "wrong number of parameters, usage: help [command]");
}

TEST(RunCommand, HasNoHelpForACommandThatIsNone) {
    EXPECT_EQ(failureOf("help", {"listdir"}), "unknown command 'listdir', did you mean listDir?");
}

TEST(RunCommand, KnowsNoOtherCommand) {
    EXPECT_EQ(failureOf("listdir", {"/"}), "unknown command 'listdir', did you mean listDir?");
}

}  // namespace
}  // namespace corvane::ctl
