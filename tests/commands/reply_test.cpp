#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <set>

#include "commands/corvane_server.h"
#include "support/command_fixture.h"

namespace corvane {
namespace {

class Reply : public test::CommandTest {
  protected:
    template <typename... Args>
    std::string sent(Args&&... args) {
        return replyOf([&] { server.sendResult(serverSocket(), std::forward<Args>(args)...); });
    }
    // The details of a reply that has only this one.
    std::string written(const CorvaneDetail& detail) {
        const std::string reply = sent("x", true, std::span(&detail, 1), "");
        const std::string begin =
            test::success("x").substr(0, test::success("x").find('>', 12) + 1);
        const std::string end = "</Header></CorvaneMsg>";
        EXPECT_EQ(reply.substr(0, begin.size()), begin);
        EXPECT_EQ(reply.substr(reply.size() - end.size()), end);
        return reply.substr(begin.size(), reply.size() - begin.size() - end.size());
    }
};

TEST_F(Reply, LooksLikeTheDocumentedExample) {
    const CorvaneDetail detail("value", "/Users/x", false);
    EXPECT_EQ(sent("userDir", true, std::nullopt, std::span(&detail, 1), "userDir"),
              "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"userDir\" "
              "Result=\"SUCCESS\" hint=\"userDir\"><Detail id=\"value\" extra=\"\" "
              "Value=\"/Users/x\" /></Header></CorvaneMsg>");
}

TEST_F(Reply, WithoutDetailsIsTheHeaderAlone) {
    EXPECT_EQ(sent("a", true, ""),
              "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"a\" "
              "Result=\"SUCCESS\"></Header></CorvaneMsg>");
    EXPECT_EQ(sent("a", false, "h"),
              "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"a\" Result=\"FAILED\" "
              "hint=\"h\"></Header></CorvaneMsg>");
}

TEST_F(Reply, PutsTheErrorNumberBeforeTheHint) {
    EXPECT_EQ(sent("a", false, std::optional<int>(2), std::span<const CorvaneDetail>(), "h"),
              test::replyText("a", "FAILED", " errno=\"2\" hint=\"h\"", ""));
}

TEST_F(Reply, WritesAnErrorNumberAlwaysWhenThereIsOne) {
    EXPECT_EQ(sent("a", false, 0), test::replyText("a", "FAILED", " errno=\"0\"", ""));
    EXPECT_EQ(sent("a", true, -1), test::replyText("a", "SUCCESS", " errno=\"-1\"", ""));
    EXPECT_EQ(sent("a", false, INT_MIN),
              test::replyText("a", "FAILED", " errno=\"-2147483648\"", ""));
}

TEST_F(Reply, EscapesNothing) {
    const CorvaneDetail detail("<&\"", "'>", true);
    EXPECT_EQ(sent("<a&\">", true, std::span(&detail, 1), "<h&\">"),
              test::replyText("<a&\">", "SUCCESS", " hint=\"<h&\">\"",
                              "<Detail id=\"<&\"\" extra=\"\">'></Detail>"));
}

TEST_F(Reply, WritesTheAttributesOfADetailInAFixedOrder) {
    CorvaneDetail detail("file", "n", false);
    EXPECT_EQ(written(detail), "<Detail id=\"file\" extra=\"\" Value=\"n\" />");
    detail.size = "7";
    EXPECT_EQ(written(detail), "<Detail id=\"file\" extra=\"\" size=\"7\" Value=\"n\" />");
    detail.date = "today";
    detail.extra = "hr";
    EXPECT_EQ(written(detail),
              "<Detail id=\"file\" extra=\"hr\" date=\"today\" size=\"7\" Value=\"n\" />");
    detail.isText = true;
    EXPECT_EQ(written(detail),
              "<Detail id=\"file\" extra=\"hr\" date=\"today\" size=\"7\">n</Detail>");
}

TEST_F(Reply, WritesEmptyValues) {
    EXPECT_EQ(written(CorvaneDetail("", "", false)), "<Detail id=\"\" extra=\"\" Value=\"\" />");
    EXPECT_EQ(written(CorvaneDetail("", "", true)), "<Detail id=\"\" extra=\"\"></Detail>");
    EXPECT_EQ(written(CorvaneDetail()), "<Detail id=\"\" extra=\"\" Value=\"\" />");
}

TEST_F(Reply, KeepsTheOrderOfManyDetails) {
    std::vector<CorvaneDetail> details;
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        details.emplace_back("id", std::to_string(i), i % 2 == 0);
        expected += i % 2 == 0
                        ? "<Detail id=\"id\" extra=\"\">" + std::to_string(i) + "</Detail>"
                        : "<Detail id=\"id\" extra=\"\" Value=\"" + std::to_string(i) + "\" />";
    }
    EXPECT_EQ(sent("x", true, details, ""), test::success("x", expected));
}

TEST_F(Reply, SendsLargeTextsWholeAndInTheirPlace) {
    for (const std::size_t size : {32U * 1024 - 1, 32U * 1024, 3'000'000U}) {
        const std::array<CorvaneDetail, 3> details{
            CorvaneDetail("a", std::string(size, 'x'), true), CorvaneDetail("b", "1", true),
            CorvaneDetail("c", std::string(size, 'y'), true)};
        EXPECT_TRUE(sent("x", true, details, "h") ==
                    test::success("x",
                                  "<Detail id=\"a\" extra=\"\">" + details[0].value +
                                      "</Detail><Detail id=\"b\" extra=\"\">1</Detail><Detail "
                                      "id=\"c\" extra=\"\">" +
                                      details[2].value + "</Detail>",
                                  "h"))
            << size;
    }
}

TEST_F(Reply, ToAFatalErrorIsAFailureWithNothingElse) {
    EXPECT_EQ(replyOf([&] { server.sendFatalError(serverSocket(), "cmd"); }), test::failure("cmd"));
}

TEST_F(Reply, ToAnUnknownCommandIsAFailureAndAWarning) {
    for (const std::string cmd : {"Write", "write ", "shutdown", "%s%n", "POST / HTTP/1.1"}) {
        EXPECT_EQ(ask(cmd, "a\nb\n"), test::failure(cmd));
        EXPECT_EQ(log.lines(), Lines{"WARN corvane.server.process.client.cmd Client "
                                     "10.1.2.3:4567: command '" +
                                     cmd + "' not found"});
    }
}

TEST_F(Reply, ToACommandThatIsNotAllowedIsThatOfAnUnknownOne) {
    server.options.allowedCommands = {"userDir"};
    EXPECT_EQ(ask("write", scratch / "f"), test::failure("write"));
    EXPECT_FALSE(std::filesystem::exists(scratch / "f"));
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST(CommandTable, HasTheCommandsInTheirOrder) {
    const std::vector<std::string> names{
        "write",        "makeDir", "regQueryValue", "delete",      "execute",       "copy",
        "rename",       "log",     "readByte",      "readText",    "listDir",       "userDir",
        "currentDir",   "tempDir", "regSetValue",   "getWndRect",  "getScreenRect", "setWndPos",
        "bringToFront", "listNet", "userName",      "clipboardGet"};
    ASSERT_EQ(commandTable.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(commandTable[i].name, names[i]);
    }
}

// What others can observe, or what may last, does not begin before its request is in the log.
TEST(CommandTable, TellsWhatIsLoggedBeforeItBegins) {
    std::string heavy;
    for (const Command& command : commandTable) {
        heavy += command.work == Work::Heavy ? std::string(command.name) + " " : "";
    }
    EXPECT_EQ(heavy,
              "write makeDir regQueryValue delete execute copy rename getWndRect getScreenRect "
              "setWndPos ");
}

}  // namespace
}  // namespace corvane
