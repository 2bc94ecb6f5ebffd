#include "corvanectl/local/reason.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "support/scratch_directory.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

const std::string me = "127.0.0.1:40000";
const std::string other = "127.0.0.1:4000";

std::string line(const std::string& level, const std::string& command, const std::string& text) {
    return concatenate("2026-11-22 16:00:00,123 [", level, ",corvane.server.process.client.cmd.",
                       command, "] ", text, "\n");
}

std::string failed(const std::string& client, const std::string& command,
                   const std::string& detail) {
    return line("ERROR", command, concatenate("Client ", client, ": cmd '", command, "'", detail));
}

TEST(ReasonIn, IsWhatTheLineOfThisClientAndCommandSays) {
    const std::string lines = failed(other, "listDir", ": ERROR: 'not mine'") +
                              failed(me, "listDir", ": ERROR: 'opendir '/x/' error 2 (2)'") +
                              failed(me, "copy", ": ERROR: 'another'");
    EXPECT_EQ(reasonIn(lines, me, "listDir"), "opendir '/x/' error 2 (2)");
    EXPECT_EQ(reasonIn(lines, me, "readText"), std::nullopt);
    EXPECT_EQ(reasonIn("", me, "listDir"), std::nullopt);
}

TEST(ReasonIn, LeavesOutWhatTheReplySaysAlready) {
    EXPECT_EQ(
        reasonIn(failed(me, "makeDir", ": directory '/x' ERROR: 'makeDirectory 'x' error (2)'"), me,
                 "makeDir"),
        "makeDirectory 'x' error (2)");
    EXPECT_EQ(reasonIn(failed(me, "write", ": fail (2) to open file '/x'"), me, "write"),
              "fail (2) to open file '/x'");
}

TEST(ReasonIn, IsNotTheCleaningUpAfterwards) {
    const std::string lines =
        failed(me, "write", ": fail (28) to write file '/x' at byte 9") +
        line("WARN", "write", "Client " + me + ": cmd 'write': clenup file '/x' ERROR: 'y'");
    EXPECT_EQ(reasonIn(lines, me, "write"), "fail (28) to write file '/x' at byte 9");
}

TEST(ReasonIn, IsNoLineThatOnlyTellsOfTheRequest) {
    EXPECT_EQ(
        reasonIn(line("DEBUG", "readText", "Client " + me + ": cmd 'readText': fname 'ERROR: 'x'"),
                 me, "readText"),
        std::nullopt);
}

TEST(ReasonIn, TellsOfACommandThatIsNotServed) {
    EXPECT_EQ(reasonIn("2026-11-22 16:00:00,123 [WARN,corvane.server.process.client.cmd] Client " +
                           me + ": command 'userDir' not found\n",
                       me, "userDir"),
              "the server knows no such command, or is told not to serve it");
}

TEST(ReasonIn, TakesALineWithoutAClientForLackOfAnother) {
    const std::string unnamed = line("ERROR", "clipboardGet", "clipboardGet() not supported");
    EXPECT_EQ(reasonIn(unnamed, me, "clipboardGet"), "clipboardGet() not supported");
    EXPECT_EQ(reasonIn(failed(me, "clipboardGet", ": ERROR: 'mine'") + unnamed, me, "clipboardGet"),
              "mine");
    EXPECT_EQ(reasonIn(failed(other, "clipboardGet", ": ERROR: 'x'"), me, "clipboardGet"),
              std::nullopt);
}

TEST(ReasonIn, IsTheFirstLineOfWhatTheWindowToolSays) {
    const std::string said = ": ERROR: 'Program error: <cvnwinfo: no X display";
    EXPECT_EQ(
        reasonIn(failed(me, "getWndRect", said) + "> [/x/cvnwinfo]) (1)'\n", me, "getWndRect"),
        "cvnwinfo: no X display");
}

TEST(ReasonIn, IsFoundInEveryLayout) {
    EXPECT_EQ(reasonIn("ERROR : Client " + me + ": cmd 'listDir': ERROR: 'why'\n", me, "listDir"),
              "why");
}

TEST(InWords, AddsTheSystemsWordsForTheNumber) {
    const std::string missing = concatenate(" (", std::strerror(ENOENT), ")");
    EXPECT_EQ(inWords("opendir '/x/' error 2 (2)"), "opendir '/x/' error 2" + missing);
    EXPECT_EQ(inWords("remove file '/x' error (2)"), "remove file '/x' error 2" + missing);
    EXPECT_EQ(inWords("fail (2) to open file '/x (13)'"),
              "fail (2) to open file '/x (13)'" + missing);
    EXPECT_EQ(inWords("cannot open file '/x' for read (2)"),
              "cannot open file '/x' for read" + missing);
}

TEST(InWords, TakesTheOpenersStatusForNoErrorNumber) {
    EXPECT_EQ(inWords("LSOpenCFURLRef error for file 'https://example.org/' (3)"),
              "LSOpenCFURLRef error for file 'https://example.org/' (status 3 of the opener)");
}

TEST(InWords, LeavesOtherNumbersAlone) {
    for (const char* text : {"plain", "", "(", "file (2) is missing", "read error on file 'x' (1)",
                             "Program error: <no window> [/x/cvnwinfo]) (2)", "due to EOF (0)"}) {
        EXPECT_EQ(inWords(text), text);
    }
}

class FailureLogTest : public testing::Test {
  protected:
    std::string explain(const std::string& before, const std::string& after) const {
        const std::string path = scratch.file("cv1.log", before);
        const FailureLog log({"", 1, scratch.path(), ""});
        std::ofstream(path, std::ios::app) << after;
        return log.explain(me, "listDir");
    }
    const test::ScratchDirectory scratch;
};

TEST_F(FailureLogTest, ReadsOnlyWhatFollowsTheRequest) {
    const std::string old = failed(me, "listDir", ": ERROR: 'of yesterday'");
    EXPECT_EQ(explain(old, failed(me, "listDir", ": ERROR: 'of today'")), "of today");
    EXPECT_NE(explain(old, "").find("says nothing about it (" + (scratch / "cv1.log")),
              std::string::npos);
}

TEST_F(FailureLogTest, GivesTheTerminalNoCommands) {
    EXPECT_EQ(explain("", failed(me, "listDir", ": ERROR: 'a\x1b[2Jb'")), "a\\x1b[2Jb");
}

TEST_F(FailureLogTest, NamesThePlacesOfALogThatCannotBeRead) {
    const std::string bin = scratch.directory("bin") + "/";
    const FailureLog log({"", 1, bin, "/home/x"});
    EXPECT_EQ(log.explain(me, "listDir"),
              concatenate("the server's log tells why; it may be ", bin, "cv1.log or ",
                          scratch / "lib/corvane/cv1.log",
                          " or /home/x/.cv1.log, --log FILE names "
                          "another"));
}

TEST_F(FailureLogTest, ReadsNoOtherLogThanTheOneThatIsNamed) {
    scratch.file("cv1.log");
    const FailureLog log({scratch / "named", 1, scratch.path(), ""});
    scratch.file("cv1.log", failed(me, "listDir", ": ERROR: 'x'"));
    scratch.file("named", failed(me, "listDir", ": ERROR: 'y'"));
    EXPECT_EQ(log.explain(me, "listDir"), "y");
}

}  // namespace
}  // namespace corvane::ctl
