#include <gtest/gtest.h>

#include "commands/wndutil.h"
#include "support/thrown.h"
#include "support/window_tool.h"

namespace corvane {
namespace {

using test::commandLine;
using test::failure;
using test::success;
using test::thrownBy;

std::string rectangle(const std::string& x, const std::string& y, const std::string& width,
                      const std::string& height) {
    return test::detail("x", x) + test::detail("y", y) + test::detail("width", width) +
           test::detail("height", height);
}

class WindowCommands : public test::WindowToolTest {
  protected:
    // The line of getScreenRect, whose category has another name.
    static std::string screenLine(const std::string& level, const std::string& detail) {
        return level +
               " corvane.server.process.client.cmd.getScreenSize Client 10.1.2.3:4567: cmd "
               "'getScreenRect'" +
               detail;
    }
};

TEST_F(WindowCommands, GetWndRectAnswersTheFourNumbers) {
    recordingTool("12,34,800,600");
    EXPECT_EQ(ask("getWndRect", "My \"window\"\r\n"),
              success("getWndRect", rectangle("12", "34", "800", "600")));
    EXPECT_EQ(calls(), "<-g><-n><My \"window\">\n");
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "getWndRect", ": window name 'My \"window\"'"),
                     startLine(" \"-g\" \"-n\" \"My \"window\"\""), outputLine("12,34,800,600")}));
}

TEST_F(WindowCommands, GetWndRectAsksForThePlayerWithoutAName) {
    recordingTool("1,2,3,4");
    for (const char* parameters : {"", "\n", "\r\n"}) {
        EXPECT_EQ(ask("getWndRect", parameters),
                  success("getWndRect", rectangle("1", "2", "3", "4")));
        EXPECT_EQ(log.lines().at(0),
                  commandLine("DEBUG", "getWndRect", ": window name 'Macromedia Flash Player'"));
    }
    const std::string call = "<-g><-n><Macromedia Flash Player>\n";
    EXPECT_EQ(calls(), call + call + call);
}

TEST_F(WindowCommands, GetWndRectReadsNumbersOfEveryKind) {
    const std::vector<std::pair<std::string, std::string>> outputs{
        {"100,200,300,400\n", rectangle("100", "200", "300", "400")},
        {"a,2,3,4", rectangle("-1", "2", "3", "4")},
        {"1,b,,d", rectangle("1", "-1", "-1", "-1")},
        {",,,", rectangle("-1", "-1", "-1", "-1")},
        {"-5, -6,+7,8x,9,10", rectangle("-5", "-6", "7", "8")},
        {"1.5,2 3,4,5", rectangle("1", "2", "4", "5")},
        {"2147483647,-2147483648,0,00012", rectangle("2147483647", "-2147483648", "0", "12")}};
    for (const auto& [output, expected] : outputs) {
        recordingTool(output);
        EXPECT_EQ(ask("getWndRect", "w"), success("getWndRect", expected)) << output;
    }
}

TEST_F(WindowCommands, GetWndRectFailsForTooFewNumbers) {
    const std::vector<std::pair<std::string, std::string>> outputs{
        {"12,34", "34"}, {"", ""}, {"garbage", "garbage"}, {"1,2,3\n", "3\n"}};
    for (const auto& [output, rest] : outputs) {
        recordingTool(output);
        EXPECT_EQ(ask("getWndRect", "w"), failure("getWndRect"));
        EXPECT_EQ(log.lines().back(),
                  commandLine("ERROR", "getWndRect",
                              ": ERROR: 'error getting next param [" + rest + "]'"));
    }
}

TEST_F(WindowCommands, GetWndRectTriesNoSecondTitle) {
    tool("echo \"$3\" >> \"$0.calls\"; echo 'no window' >&2; exit 1");
    EXPECT_EQ(ask("getWndRect"), failure("getWndRect"));
    EXPECT_EQ(calls(), "Macromedia Flash Player\n");
    EXPECT_EQ(log.lines().back(),
              commandLine("ERROR", "getWndRect",
                          ": ERROR: 'Program error: <no window\n> [" + toolPath + "]) (1)'"));
}

TEST_F(WindowCommands, GetWndRectFailsWithoutATool) {
    EXPECT_EQ(ask("getWndRect", "w"), failure("getWndRect"));
    EXPECT_EQ(log.lines().back(), commandLine("ERROR", "getWndRect",
                                              ": ERROR: 'Program error: <execv() fail err 2> [" +
                                                  toolPath + "]) (2)'"));
}

TEST_F(WindowCommands, GetScreenRectAnswersTheSizeAtTheOrigin) {
    recordingTool("1920,1080\n");
    EXPECT_EQ(ask("getScreenRect", "ignored"),
              success("getScreenRect", rectangle("0", "0", "1920", "1080")));
    EXPECT_EQ(calls(), "<-a>\n");
    EXPECT_EQ(log.lines(),
              (Lines{screenLine("DEBUG", ""), startLine(" \"-a\""), outputLine("1920,1080\n")}));
}

TEST_F(WindowCommands, GetScreenRectFailsForOneNumber) {
    recordingTool("1920");
    EXPECT_EQ(ask("getScreenRect"), failure("getScreenRect"));
    EXPECT_EQ(log.lines().back(),
              screenLine("ERROR", ": ERROR: 'error getting next param [1920]'"));
}

TEST_F(WindowCommands, SetWndPosMovesAndResizes) {
    recordingTool("ignored");
    EXPECT_EQ(ask("setWndPos", "3\r\n10\r\n-20\r\n640\r\n480\r\nMy window\r\n"),
              success("setWndPos"));
    EXPECT_EQ(calls(), "<-n><My window><-p><10,-20><-s><640,480>\n");
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "setWndPos", ": window name 'My window' flag 0x3"),
                     startLine(" \"-n\" \"My window\" \"-p\" \"10,-20\" \"-s\" \"640,480\""),
                     outputLine("ignored")}));
}

TEST_F(WindowCommands, SetWndPosReadsOnlyTheLinesThatTheFlagsAskFor) {
    const std::vector<std::pair<std::string, std::string>> requests{
        {"1\n10\n20\nw", "<-n><w><-p><10,20>\n"},
        {"2\n640\n480\nw", "<-n><w><-s><640,480>\n"},
        {"4\nw", "<-n><w>\n"},
        {"7\n1\n2\n3\n4\nw", "<-n><w><-p><1,2><-s><3,4>\n"},
        {"-1\n1\n2\n3\n4\nw", "<-n><w><-p><1,2><-s><3,4>\n"},
        {"1x\nabc\n\nw", "<-n><w><-p><-1,-1>\n"}};
    recordingTool("");
    std::string expected;
    for (const auto& [parameters, call] : requests) {
        EXPECT_EQ(ask("setWndPos", parameters), success("setWndPos"));
        expected += call;
        EXPECT_EQ(calls(), expected) << parameters;
    }
}

TEST_F(WindowCommands, SetWndPosShowsTheFlagsInHexadecimal) {
    recordingTool("");
    for (const auto& [flags, shown] :
         std::vector<std::pair<std::string, std::string>>{{"4", "0x4"}, {"-4", "0xfffffffc"}}) {
        ask("setWndPos", flags + "\nw");
        EXPECT_EQ(log.lines().at(0),
                  commandLine("DEBUG", "setWndPos", ": window name 'w' flag " + shown));
    }
}

TEST_F(WindowCommands, SetWndPosFailsForFlagsThatAskForNothing) {
    recordingTool("");
    for (const std::string flags : {"0", "abc", "", "0x1"}) {
        EXPECT_EQ(ask("setWndPos", flags + "\n1\n2\nw"), failure("setWndPos"));
        EXPECT_EQ(log.lines(), Lines{commandLine("ERROR", "setWndPos",
                                                 ": ERROR: 'Invalid flag '" + flags + "''")});
    }
    EXPECT_EQ(calls(), "");
}

TEST_F(WindowCommands, SetWndPosLetsFlagsWithoutAMeaningPass) {
    recordingTool("");
    EXPECT_EQ(ask("setWndPos", "4294967297\n1\n2\nw"), success("setWndPos"));
    EXPECT_EQ(ask("setWndPos", "4294967296\nw"), success("setWndPos"));
    EXPECT_EQ(calls(), "<-n><w><-p><1,2>\n<-n><w>\n");
}

TEST_F(WindowCommands, SetWndPosTakesANumberThatIsTooLargeForNone) {
    recordingTool("");
    EXPECT_EQ(ask("setWndPos", "1\n4294967306\n2147483647\nw"), success("setWndPos"));
    EXPECT_EQ(calls(), "<-n><w><-p><-1,2147483647>\n");
    EXPECT_EQ(ask("setWndPos", "1\n-4294967286\n-2147483648\nw"), success("setWndPos"));
    EXPECT_EQ(calls(), "<-n><w><-p><-1,2147483647>\n<-n><w><-p><-1,-2147483648>\n");
}

TEST_F(WindowCommands, SetWndPosMovesThePlayerWithoutAName) {
    recordingTool("");
    EXPECT_EQ(ask("setWndPos", "1\n10\n20\n\n"), success("setWndPos"));
    EXPECT_EQ(calls(), "<-n><Macromedia Flash Player><-p><10,20>\n");
    EXPECT_EQ(log.lines().at(0), commandLine("DEBUG", "setWndPos", ": window name '' flag 0x1"));
}

TEST_F(WindowCommands, SetWndPosTriesTheOtherTitleOfThePlayer) {
    tool("printf '%s\\n' \"$*\" >> \"$0.calls\"; [ \"$2\" = 'Adobe Flash Player' ]");
    EXPECT_EQ(ask("setWndPos", "1\n10\n20"), success("setWndPos"));
    EXPECT_EQ(calls(), "-n Macromedia Flash Player -p 10,20\n-n Adobe Flash Player -p 10,20\n");
}

TEST_F(WindowCommands, SetWndPosFailsWhenBothTitlesFail) {
    tool("echo \"$2\" >> \"$0.calls\"; printf \"no $2\" >&2; exit 5");
    EXPECT_EQ(ask("setWndPos", "1\n10\n20"), failure("setWndPos"));
    EXPECT_EQ(calls(), "Macromedia Flash Player\nAdobe Flash Player\n");
    EXPECT_EQ(log.lines().back(), commandLine("ERROR", "setWndPos",
                                              ": ERROR: 'Program error: <no Adobe Flash Player> [" +
                                                  toolPath + "]) (5)'"));
}

TEST_F(WindowCommands, SetWndPosTriesNoOtherTitleForAWindowWithAName) {
    tool("echo \"$2\" >> \"$0.calls\"; exit 5");
    EXPECT_EQ(ask("setWndPos", "4\nw"), failure("setWndPos"));
    EXPECT_EQ(calls(), "w\n");
}

TEST_F(WindowCommands, BringToFrontIsNotImplemented) {
    recordingTool("");
    EXPECT_EQ(ask("bringToFront", "w"), failure("bringToFront"));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "bringToFront", ": window name 'w'"),
                     commandLine("ERROR", "bringToFront", ": ERROR: 'Not implemented'")}));
    EXPECT_EQ(calls(), "");
}

TEST_F(WindowCommands, BringToFrontNeedsAName) {
    EXPECT_EQ(ask("bringToFront"), failure("bringToFront"));
    EXPECT_EQ(log.lines(),
              Lines{commandLine("ERROR", "bringToFront", ": ERROR: 'Window name is empty'")});
}

TEST(NextInt, TakesTheNumberBehindTheNextComma) {
    const std::string text = "1,2,x,-4";
    const char* cursor = text.c_str();
    EXPECT_EQ(wndutil::nextInt(cursor), 2);
    EXPECT_STREQ(cursor, "2,x,-4");
    EXPECT_EQ(wndutil::nextInt(cursor), -1);
    EXPECT_EQ(wndutil::nextInt(cursor), -4);
    EXPECT_EQ(thrownBy([&] { wndutil::nextInt(cursor); }), "error getting next param [-4]");
    EXPECT_STREQ(cursor, "-4");
}

}  // namespace
}  // namespace corvane
