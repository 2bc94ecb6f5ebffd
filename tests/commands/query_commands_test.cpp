#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "fileutil/paths.h"
#include "platform/system.h"
#include "support/command_fixture.h"
#include "support/environment.h"
#include "support/working_directory.h"
#include "text/strings.h"

namespace corvane {
namespace {

using test::commandLine;
using test::EnvironmentVariable;
using test::failure;
using test::success;
using test::valueDetail;

class QueryCommands : public test::CommandTest {
  protected:
    EnvironmentVariable home{"HOME", scratch / "ho\\me&"};
};

TEST_F(QueryCommands, UserDirAnswersTheHomeAsItIs) {
    for (const char* parameters : {"", "\n", "\r\n", "\nrest"}) {
        EXPECT_EQ(ask("userDir", parameters),
                  success("userDir", valueDetail(scratch / "ho\\me&"), "userDir"));
        EXPECT_EQ(log.lines(), Lines{commandLine("DEBUG", "userDir", "")});
    }
}

TEST_F(QueryCommands, UserDirAnswersTheDesktop) {
    scratch.directory("ho/me&/Desktop");
    EXPECT_EQ(ask("userDir", "desktop"),
              success("userDir", valueDetail(scratch / "ho/me&/Desktop"), "userDir desktop"));
}

TEST_F(QueryCommands, UserDirAnswersNothingWhereThereIsNoDesktop) {
    EXPECT_EQ(ask("userDir", "desktop\r\n"),
              success("userDir", valueDetail(""), "userDir desktop"));
    EXPECT_EQ(log.lines(), (Lines{commandLine("DEBUG", "userDir", ""),
                                  "DEBUG corvane.fileutil.getUserDesktop path '" +
                                      (scratch / "ho/me&/Desktop") + "' is not directory"}));
}

TEST_F(QueryCommands, UserDirKnowsOneSpellingOfDesktop) {
    for (const std::string which : {"Desktop", "desktop ", "documents"}) {
        EXPECT_EQ(ask("userDir", which),
                  success("userDir", valueDetail(scratch / "ho\\me&"), "userDir " + which));
    }
}

TEST_F(QueryCommands, UserNameAnswersTheLoginName) {
    const char* login = ::getlogin();
    EXPECT_EQ(ask("userName"),
              success("userName", valueDetail(login == nullptr ? "" : login), "userName"));
    EXPECT_EQ(log.lines(), Lines{commandLine("DEBUG", "userName", "")});
}

TEST_F(QueryCommands, CurrentDirAnswersTheWorkingDirectory) {
    const test::WorkingDirectory inside(scratch.directory("here&<"));
    EXPECT_EQ(ask("currentDir"),
              success("currentDir", valueDetail(std::filesystem::current_path().string() + "/"),
                      "currentDir"));
    EXPECT_EQ(log.lines(), Lines{commandLine("DEBUG", "currentDir", "")});
}

TEST_F(QueryCommands, TempDirAnswersTheTemporaryDirectory) {
    const EnvironmentVariable variable("TMPDIR", scratch.directory("t"));
    EXPECT_EQ(ask("tempDir"),
              success("tempDir", valueDetail(platform::temporaryDirectory()), "tempDir"));
    EXPECT_EQ(log.lines(), Lines{commandLine("DEBUG", "tempDir", "")});
}

TEST_F(QueryCommands, ClipboardGetFailsWithItsNameAsAHint) {
    EXPECT_EQ(ask("clipboardGet"), failure("clipboardGet", "clipboardGet"));
    EXPECT_EQ(log.lines(), (Lines{commandLine("DEBUG", "clipboardGet", ""),
                                  "ERROR corvane.server.process.client.cmd.clipboardGet "
                                  "clipboardGet() not supported on this platform"}));
}

TEST_F(QueryCommands, ListNetFailsWithoutAHint) {
    EXPECT_EQ(ask("listNet", "work%s"), failure("listNet"));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "listNet", ": group 'work%s'"),
                     commandLine("ERROR", "listNet",
                                 ": group 'work%s' ERROR: 'function netEnum() not implemented on "
                                 "this platform'")}));
}

TEST_F(QueryCommands, NothingIsLoggedBelowTheLevel) {
    const test::LogCapture errorsOnly(log4cpp::Priority::ERROR);
    ask("userDir");
    EXPECT_EQ(errorsOnly.lines(), Lines{});
}

TEST_F(QueryCommands, LogWritesAtInfoUnderItsOwnCategory) {
    EXPECT_EQ(ask("log", "\n\n100% done %s\n"), success("log"));
    EXPECT_EQ(log.lines(), Lines{"INFO ext.log 100% done %s"});
}

TEST_F(QueryCommands, LogWritesUnderASubCategoryAtAPriority) {
    for (const std::string priority : {"DEBUG", "INFO", "NOTICE", "WARN", "ERROR", "FATAL"}) {
        EXPECT_EQ(ask("log", "game.level\r\n" + priority + "\r\nhello\r\n"), success("log"));
        EXPECT_EQ(log.lines(), Lines{priority + " ext.log.game.level hello"});
    }
}

TEST_F(QueryCommands, LogTakesAPriorityAsANumber) {
    EXPECT_EQ(ask("log", "\n300\nhello"), success("log"));
    EXPECT_EQ(log.lines(), Lines{"ERROR ext.log hello"});
}

TEST_F(QueryCommands, LogWritesAnEmptyMessage) {
    EXPECT_EQ(ask("log"), success("log"));
    EXPECT_EQ(log.lines(), Lines{"INFO ext.log "});
}

TEST_F(QueryCommands, LogFailsForAnUnknownPriority) {
    EXPECT_EQ(ask("log", "\nLOUD\nhello"), failure("log"));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].rfind(commandLine("ERROR", "log", ": ERROR: '"), 0), 0U);
    EXPECT_NE(log.lines()[0].find("LOUD"), std::string::npos);
}

// The logging library keeps every category for ever; a client must not fill the memory with them.
TEST_F(QueryCommands, LogMakesALimitedNumberOfCategories) {
    std::string last;
    for (int i = 0; i < 10'100; ++i) {
        ask("log", format("c%d\n\nhello", i));
        last = log.lines().at(0);
    }
    EXPECT_EQ(last, "INFO ext.log hello");
    EXPECT_EQ(ask("log", "c7\n\nhello"), success("log"));
    EXPECT_EQ(log.lines(), Lines{"INFO ext.log.c7 hello"});
}

}  // namespace
}  // namespace corvane
