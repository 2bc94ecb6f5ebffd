// Running the window tool, with tools of every kind of bad behaviour.
#include "support/tool_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "commands/wndutil.h"
#include "support/child_reports.h"
#include "support/signal_action.h"
#include "support/thrown.h"

namespace corvane {
namespace {

using test::thrownBy;
using test::ToolRun;

TEST_F(ToolRun, ReturnsTheOutputAndLogsBothSteps) {
    tool("printf '1,2\\n'");
    EXPECT_EQ(run({"-g", "-n", "a \"title\""}), "1,2\n");
    EXPECT_EQ(log.lines(),
              (Lines{startLine(" \"-g\" \"-n\" \"a \"title\"\""), outputLine("1,2\n")}));
}

TEST_F(ToolRun, PassesTheArgumentsAsTheyAre) {
    recordingTool("");
    EXPECT_EQ(run({"-n", "a  b", "", "$HOME", "'\"\\"}), "");
    EXPECT_EQ(calls(), "<-n><a  b><><$HOME><'\"\\>\n");
}

TEST_F(ToolRun, AcceptsAToolThatPrintsNothing) {
    tool("exit 0");
    EXPECT_EQ(run(), "");
    EXPECT_EQ(log.lines(), (Lines{startLine(""), outputLine("")}));
}

TEST_F(ToolRun, IgnoresStandardErrorOfAToolThatSucceeds) {
    tool("echo warning >&2\necho ok");
    EXPECT_EQ(run(), "ok\n");
}

TEST_F(ToolRun, ReportsTheStandardErrorOfAToolThatFails) {
    tool("echo output\nprintf 'no such window' >&2\nexit 3");
    EXPECT_EQ(thrownBy<IOException>([this] { run(); }),
              "Program error: <no such window> [" + toolPath + "]) (3)");
    EXPECT_EQ(log.lines(), Lines{startLine("")});
}

TEST_F(ToolRun, ReportsTheLargestExitStatus) {
    tool("exit 255");
    EXPECT_EQ(runFailing(), "Program error: <> [" + toolPath + "]) (255)");
}

TEST_F(ToolRun, ReportsAToolThatIsKilled) {
    tool("printf 'last words' >&2\nkill -9 $$");
    EXPECT_EQ(runFailing(), "Program has exited in unusual way (9) with message: <last words> [" +
                                toolPath + "])");
    tool("kill -15 $$");
    EXPECT_EQ(runFailing(),
              "Program has exited in unusual way (15) with message: <> [" + toolPath + "])");
}

TEST_F(ToolRun, ReportsAToolThatIsMissing) {
    EXPECT_EQ(thrownBy<IOException>([this] { run(); }),
              "Program error: <execv() fail err 2> [" + toolPath + "]) (2)");
}

TEST_F(ToolRun, ReportsAToolThatCannotBeExecuted) {
    scratch.file("app/cvnwinfo", "#!/bin/sh\n");
    EXPECT_EQ(runFailing(), "Program error: <execv() fail err 13> [" + toolPath + "]) (13)");
    std::filesystem::remove(toolPath);
    scratch.directory("app/cvnwinfo");
    EXPECT_EQ(runFailing(), "Program error: <execv() fail err 13> [" + toolPath + "]) (13)");
    std::filesystem::remove(toolPath);
    scratch.program("app/cvnwinfo", "garbage");
    EXPECT_EQ(runFailing(), test::withCode("Program error: <execv() fail err " +
                                               std::to_string(ENOEXEC) + "> [" + toolPath + "])",
                                           ENOEXEC));
}

TEST_F(ToolRun, RunsNoExitHandlerWhenTheToolCannotBeExecuted) {
    static const pid_t parent = ::getpid();
    const auto handler = [] {
        if (::getpid() != parent) {
            ::_exit(1);
        }
    };
    ASSERT_EQ(std::atexit(handler), 0);
    EXPECT_EQ(runFailing(), "Program error: <execv() fail err 2> [" + toolPath + "]) (2)");
}

TEST_F(ToolRun, DoesNotSearchThePath) {
    toolPath = "sh";
    EXPECT_EQ(runFailing(), "Program error: <execv() fail err 2> [sh]) (2)");
}

TEST_F(ToolRun, ReadsATextThatIsWrittenInPieces) {
    tool("printf a; printf b; printf c; exec printf d");
    EXPECT_EQ(run(), "abcd");
}

TEST_F(ToolRun, GoesOnAfterTheToolHasClosedItsOutputs) {
    tool("printf done\nexec > /dev/null 2>&1\nfor i in 1 2 3 4 5; do printf x; done\nexit 0");
    EXPECT_EQ(run(), "done");
}

TEST_F(ToolRun, ReadsWhatABackgroundProcessWritesAfterTheEnd) {
    tool("(read line < '" + silentPipe() + "'; printf late) &\nprintf 'go\\n' > '" +
         (scratch / "silent") + "'\nprintf early");
    std::string text = run();
    std::sort(text.begin(), text.end());
    EXPECT_EQ(text, "aaeellrty");
}

TEST_F(ToolRun, GivesTheToolItsTwoPipesAndCleanSignals) {
    test::ChildReports reports(scratch);
    scratch.directory("app");
    ASSERT_EQ(::symlink(CHILD_REPORT, toolPath.c_str()), 0);
    const test::SignalAction brokenPipe(SIGPIPE, SIG_IGN);
    EXPECT_EQ(run(), "");
    const Lines report = reports.next();
    // One descriptor of each pipe: a second one would keep it from ending.
    std::vector<std::string> pipes;
    for (const std::string& open : test::ChildReports::valuesOf(report, "descriptor")) {
        if (open.rfind("1 pipe:", 0) == 0 || open.rfind("2 pipe:", 0) == 0) {
            pipes.push_back(open.substr(2));
        }
    }
    ASSERT_EQ(pipes.size(), 2U);
    EXPECT_NE(pipes[0], pipes[1]);
    for (const std::string& pipe : pipes) {
        EXPECT_EQ(std::count_if(report.begin(), report.end(),
                                [&](const std::string& line) { return line.ends_with(pipe); }),
                  1);
    }
    for (const char* set : {"SigBlk:", "SigIgn:", "SigCgt:"}) {
        EXPECT_EQ(test::ChildReports::valuesOf(report, set), Lines{"0000000000000000"}) << set;
    }
}

volatile std::sig_atomic_t childSignals = 0;

TEST_F(ToolRun, PutsTheHandlingOfChildrenBackAndAsksForThoseThatEndedMeanwhile) {
    struct sigaction counting {};
    struct sigaction previous {};
    struct sigaction after {};
    counting.sa_handler = [](int) { childSignals = childSignals + 1; };
    ASSERT_EQ(::sigaction(SIGCHLD, &counting, &previous), 0);
    childSignals = 0;
    tool("exit 0");
    run();
    runFailing();
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_TRUE(childSignals > 0 || sigismember(&pending, SIGCHLD) == 1);
    ::sigaction(SIGCHLD, &previous, &after);
    EXPECT_EQ(after.sa_handler, counting.sa_handler);
}

TEST_F(ToolRun, WorksWhenChildrenAreIgnored) {
    const test::SignalAction children(SIGCHLD, SIG_IGN);
    tool("printf ok");
    EXPECT_EQ(run(), "ok");
}

TEST(ReadString, ReadsToTheEnd) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const FileDesc readEnd(ends[0]);
    FileDesc writeEnd(ends[1]);
    const std::string text = std::string(5000, 'x') + '\0' + "end";
    ASSERT_EQ(::write(writeEnd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    writeEnd.close();
    EXPECT_EQ(wndutil::readstring(readEnd), text);
    EXPECT_EQ(wndutil::readstring(readEnd), "");
}

TEST(ReadString, FailsForADescriptorThatIsNotOpen) {
    EXPECT_EQ(thrownBy<IOException>([] { wndutil::readstring(-1); }), "reading pipe fail (9)");
}

TEST(MakeCmd, QuotesEachArgument) {
    std::string path = "/Applications/X.app/Contents/MacOS/cvnwinfo";
    std::string get = "-g";
    std::string name = "-n";
    std::string title = "Macromedia Flash Player";
    const std::array<char*, 5> argv{path.data(), get.data(), name.data(), title.data(), nullptr};
    EXPECT_EQ(wndutil::makeCmd(path.c_str(), argv.data()),
              path + " \"-g\" \"-n\" \"Macromedia Flash Player\"");
    const std::array<char*, 2> alone{path.data(), nullptr};
    EXPECT_EQ(wndutil::makeCmd(path.c_str(), alone.data()), path);
}

}  // namespace
}  // namespace corvane
