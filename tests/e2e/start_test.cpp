// Starting: the configuration file, the log, the working directory and the exit status of a start
// that fails.
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

using Lines = std::vector<std::string>;
using Files = std::vector<std::pair<std::string, std::string>>;

const std::string startLine = "NOTICE corvane start corvane v. " CORVANE_VERSION;
const std::string plain = "log4cpp.pattern=%p %c %m%n\n";

class StartTest : public ServerTest {};

TEST_F(StartTest, PrintsOneLineAndLogsEachStep) {
    ServerProcess& server = start();
    const std::string port = std::to_string(server.port());
    const Lines lines = server.logLines();
    ASSERT_GE(lines.size(), 6U);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 6),
              (Lines{startLine, "INFO corvane Current dir is '" + server.directory().path() + "'",
                     "DEBUG corvane.server.init Creating socket...",
                     "DEBUG corvane.server.init Binding socket to 127.0.0.1:0 (127.0.0.1)...",
                     "DEBUG corvane.server.init Listening with backlog 128...",
                     "NOTICE corvane.server.init Listening on 127.0.0.1:" + port}));
    EXPECT_EQ(server.output(), "Initializing app\n");
}

TEST_F(StartTest, WritesTheLogToTheConsoleAsWell) {
    ServerProcess& server = start();
    EXPECT_TRUE(server.waitForLog("Process loop start"));
    EXPECT_TRUE(waitUntil([&] {
        return server.errors() == "DEBUG corvane.log acs is -1\n" + server.log();
    })) << server.errors();
}

TEST_F(StartTest, PutsTheTimeInFrontOfEveryLineByDefault) {
    ServerProcess& server =
        startWith({.files = {{"corvane.conf", "PORT=0\n"}}, .ownConfiguration = true});
    const std::string line = server.logLines().front();
    EXPECT_EQ(line.substr(line.find('[')), "[NOTICE,corvane] start corvane v. " CORVANE_VERSION);
    EXPECT_GT(line.find('['), 18U);
    EXPECT_TRUE(waitUntil([&] { return server.errors().ends_with(server.log()); }))
        << server.errors();
    const std::string console = server.errors();
    const std::string first = console.substr(0, console.find('\n'));
    EXPECT_EQ(first.substr(first.find('[')), "[DEBUG,corvane.log] acs is -1");
    EXPECT_GT(first.find('['), 18U);
}

TEST_F(StartTest, ReadsTheOtherConfigurationFileWhenTheFirstIsMissing) {
    ServerProcess& server =
        startWith({.files = {{"corvane.cfg", "port=0\n" + plain}}, .ownConfiguration = true});
    EXPECT_EQ(server.logLines().front(), startLine);
}

TEST_F(StartTest, NeverReadsTheOtherConfigurationFileWhenTheFirstIsThere) {
    ServerProcess& server =
        startWith({.files = {{"corvane.cfg", "PORT=1\nlog4cpp.priority=LOUD\n"}}});
    EXPECT_EQ(server.logLines().front(), startLine);
}

TEST_F(StartTest, ChangesTheWorkingDirectory) {
    ServerProcess& server = start("CURRDIR=home\n");
    const std::string before = server.directory().path();
    const Lines lines = server.logLines();
    EXPECT_EQ(lines[1], "DEBUG corvane Changing cwd from '" + before + "' to 'home'");
    EXPECT_EQ(lines[2], "INFO corvane Current dir is '" + before + "home/'");
    EXPECT_EQ(server.request("currentDir"), currentDirReply(before + "home/"));
}

TEST_F(StartTest, StaysWhereItIsWhenTheWorkingDirectoryIsMissing) {
    ServerProcess& server = start("CURRDIR=/no/such/directory\n");
    const Lines lines = server.logLines();
    EXPECT_EQ(lines[2], "WARN corvane FAIL to change current dir to '/no/such/directory' (err " +
                            std::to_string(ENOENT) + ")");
    EXPECT_EQ(lines[3], "INFO corvane Current dir is '" + server.directory().path() + "'");
}

TEST_F(StartTest, WarnsWhenTheAddressIsNotALoopbackAddress) {
    ServerProcess& server = start("ADDRESS=any\nlog4cpp.priority=NOTICE\n");
    const std::string port = std::to_string(server.port());
    EXPECT_TRUE(server.waitForLog("use this server"));
    EXPECT_EQ(server.logLines(),
              (Lines{startLine, "NOTICE corvane.server.init Listening on 0.0.0.0:" + port,
                     "WARN corvane.server.init 0.0.0.0:" + port +
                         " is not a loopback address: everyone who can reach it can use this "
                         "server"}));
}

TEST_F(StartTest, AppendsToTheLogOfTheRunBefore) {
    ServerProcess& server = startWith({.files = {{"cv0.log", "the run before\n"}}});
    EXPECT_EQ(server.logLines().front(), "the run before");
}

TEST_F(StartTest, PutsTheLogIntoTheHomeDirectoryWhenItHasNoPlaceBesideTheProgram) {
    ServerProcess& server = startWith(
        {.configuration = "ADDRESS=no such host\n", .files = {{"cv0.log/not-a-file", ""}}});
    EXPECT_EQ(server.wait(), 0);
    const std::string hidden = server.directory() / "home/.cv0.log";
    EXPECT_EQ(server.errors().rfind("DEBUG corvane.log acs is -1\n"
                                    "DEBUG corvane.log Error creating log '" +
                                        (server.directory() / "cv0.log") +
                                        "'\nDEBUG corvane.log Trying another log location '" +
                                        hidden + "'\n",
                                    0),
              0U);
    EXPECT_EQ(readFile(hidden).rfind(startLine + "\n", 0), 0U);
}

TEST_F(StartTest, EndsWhenTheLogHasNoPlaceAtAll) {
    ServerProcess& server = startWith({.files = {{"cv0.log/x", ""}, {"home/.cv0.log/x", ""}}});
    EXPECT_EQ(server.wait(), 255);
    EXPECT_EQ(server.output(), "Initializing app\ncorvane init error:\nCannot create log file " +
                                   (server.directory() / "home/.cv0.log") + "\n");
}

TEST_F(StartTest, EndsForAnUnknownLogLevelAndOpensNoLog) {
    ServerProcess& server = start("log4cpp.priority=LOUD\n");
    EXPECT_EQ(server.wait(), 255);
    EXPECT_EQ(server.output(),
              "Initializing app\ncorvane init error:\nInvalid priority (LOUD) in logging "
              "configuration file for category: root\n");
    EXPECT_FALSE(std::filesystem::exists(server.directory() / "cv0.log"));
}

TEST_F(StartTest, EndsForAConfigurationThatItCannotRead) {
    ServerProcess& server = startWith(
        {.files = {{"corvane.conf", "PORT=0\n"}}, .ownConfiguration = true, .prepare = [] {
             ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
             ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
             ::chmod("corvane.conf", 0);
         }});
    EXPECT_EQ(server.wait(), 255);
    EXPECT_EQ(server.output(),
              "Initializing app\ncorvane init error:\nCannot read the configuration file " +
                  (server.directory() / "corvane.conf") + ": Permission denied\n");
    EXPECT_FALSE(std::filesystem::exists(server.directory() / "cv0.log"));
}

TEST_F(StartTest, EndsForANumberThatItCannotWorkWithAndOpensNoLog) {
    const std::string refused = "Initializing app\ncorvane init error:\n";
    EXPECT_EQ(start("PORT=70000\n").wait(), 255);
    EXPECT_EQ(server().output(),
              refused + "PORT=70000 is not possible: it must be a number from 0 to 65535\n");
    EXPECT_EQ(start("INACTIVITY=-1\n").wait(), 255);
    EXPECT_EQ(
        server().output(),
        refused + "INACTIVITY=-1 is not possible: it must be a number from 0 to 2147483647\n");
    EXPECT_FALSE(std::filesystem::exists(server().directory() / "cv0.log"));
}

TEST_F(StartTest, WarnsOfNamesInTheCommandListThatAreNoCommands) {
    start("COMMANDS=userDir,listdir,shutdown,\n");
    std::vector<std::string> warnings;
    for (const std::string& line : server().logLines()) {
        if (line.rfind("WARN", 0) == 0) {
            warnings.push_back(line);
        }
    }
    EXPECT_EQ(warnings,
              std::vector<std::string>{"WARN corvane COMMANDS: there is no command 'listdir'"});
}

TEST_F(StartTest, ReportsAPortThatIsTakenInTheLog) {
    ServerProcess& first = start();
    const std::string port = std::to_string(first.port());
    const ServerProcess::Options options{.files = {{"corvane.conf", "PORT=" + port + "\n" + plain}},
                                         .ownConfiguration = true};
    ServerProcess second(options);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_EQ(readFile(second.directory() / ("cv" + port + ".log")),
              startLine + "\nINFO corvane Current dir is '" + second.directory().path() +
                  "'\nDEBUG corvane.server.init Creating socket...\n"
                  "DEBUG corvane.server.init Binding socket to 127.0.0.1:" +
                  port +
                  " (127.0.0.1)...\nERROR corvane Server exception: Bind error to 127.0.0.1:" +
                  port + " (" + std::to_string(EADDRINUSE) +
                  ")\nNOTICE corvane stop service\nDEBUG corvane pid file release\n"
                  "NOTICE corvane application terminated\n");
    EXPECT_EQ(first.request("currentDir"), currentDirReply(first.directory().path()));
}

TEST_F(StartTest, NeedsNoReaderOfItsStandardOutput) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    ::close(pipe[0]);
    ServerProcess& server = startWith({.standardOutput = pipe[1], .prepare = [] {
                                           static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
                                       }});
    ::close(pipe[1]);
    EXPECT_EQ(server.request("currentDir"), currentDirReply(server.directory().path()));
}

TEST_F(StartTest, ReportsAnAddressThatNobodyKnowsInTheLog) {
    ServerProcess& server = start("ADDRESS=no such host\nlog4cpp.priority=NOTICE\n");
    EXPECT_EQ(server.wait(), 0);
    EXPECT_EQ(server.logLines(),
              (Lines{startLine,
                     "ERROR corvane Server exception: Bind error to 255.255.255.255:0 (" +
                         std::to_string(EADDRNOTAVAIL) + ")",
                     "NOTICE corvane stop service", "NOTICE corvane application terminated"}));
}

// With no descriptor left for the listener the default port is not touched.
TEST_F(StartTest, WarnsBeforeTheStartNoticeWhenThereIsNoConfigurationFile) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers need descriptors of their own";
    }
    ServerProcess& server = startWith({.ownConfiguration = true, .prepare = [] {
                                           const rlimit onlyLogs{5, 5};
                                           ::setrlimit(RLIMIT_NOFILE, &onlyLogs);
                                       }});
    EXPECT_EQ(server.wait(), 0);
    const std::string log = readFile(server.directory() / "cv54321.log");
    const std::size_t warning = log.find(
        " [WARN,corvane] Neither 'corvane.conf' nor 'corvane.cfg' were found. using default "
        "values.\n");
    const std::size_t notice = log.find(" [NOTICE,corvane] start corvane v. ");
    ASSERT_NE(warning, std::string::npos) << log << server.output();
    EXPECT_LT(warning, notice);
    EXPECT_NE(log.find("Server exception: Create socket error (24)"), std::string::npos);
}

}  // namespace
}  // namespace corvane::test
