#include "corvanectl/command_help.h"

#include <gtest/gtest.h>

#include <string>

#include "corvanectl/local_command.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

// Whether a line begins with "name: ".
bool explains(std::string_view parameters, const std::string& name) {
    return concatenate("\n", parameters).find("\n" + name + ": ") != std::string::npos;
}

void expectComplete(const CommandUsage& command, const CommandHelp& help) {
    SCOPED_TRACE(command.name);
    EXPECT_TRUE(endsWith(help.sentence, "."));
    EXPECT_TRUE(startsWith(help.example, "corvanectl ") || command.takesData()) << help.example;
    EXPECT_NE(help.example.find(command.name), std::string_view::npos);
    for (const std::string& name : strExplode(command.parameters, " ")) {
        EXPECT_TRUE(name.empty() || explains(help.parameters, trim(name, "[]"))) << name;
    }
}

TEST(CommandHelp, ExplainsEveryCommandOfTheServerWithAllItsParameters) {
    for (const CommandUsage& command : commandList()) {
        const CommandHelp* const help = findHelp(command.name);
        ASSERT_NE(help, nullptr) << command.name;
        expectComplete(command, *help);
    }
    EXPECT_EQ(findHelp("unheardOf"), nullptr);
}

TEST(CommandHelp, ExplainsEveryLocalCommandWithAllItsParameters) {
    for (const LocalCommand& command : localCommands()) {
        expectComplete(command.usage, command.help);
        EXPECT_NE(command.run, nullptr);
    }
}

TEST(CommandHelp, FitsOnATerminalOf100Columns) {
    for (const CommandUsage& command : commandList()) {
        for (const std::string& line :
             strExplode(helpPage(command, *findHelp(command.name)), "\n")) {
            EXPECT_LE(line.size(), 110U) << line;
        }
    }
}

TEST(HelpPage, AlignsTheParametersAndContinuesThem) {
    const CommandUsage command{"do", "file [how]"};
    const CommandHelp help{"Does it.", "file: what\nhow: a way:\nor none", "corvanectl do x",
                           "Mind."};
    EXPECT_EQ(helpPage(command, help),
              "Usage: corvanectl do file [how]\n\nDoes it.\n\nMind.\n\nParameters:\n   file  what\n"
              "   how   a way:\n         or none\n\nExample:\n   corvanectl do x\n");
}

TEST(HelpPage, LeavesOutWhatThereIsNot) {
    EXPECT_EQ(helpPage({"do", ""}, {"Does it.", "", "corvanectl do"}),
              "Usage: corvanectl do\n\nDoes it.\n\nExample:\n   corvanectl do\n");
}

TEST(CommandHelp, WarnsOfTheTailThatAShorterSourceLeaves) {
    for (const char* command : {"copy", "rename"}) {
        EXPECT_NE(findHelp(command)->note.find("not shortened"), std::string_view::npos);
        EXPECT_TRUE(explains(findHelp(command)->parameters, "--replace"));
    }
}

}  // namespace
}  // namespace corvane::ctl
