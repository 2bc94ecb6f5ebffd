#include "platform/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "support/child_reports.h"
#include "support/environment.h"
#include "support/resource_limit.h"
#include "support/scratch_directory.h"
#include "support/signal_action.h"

namespace corvane {
namespace {

using test::ChildReports;
using Lines = std::vector<std::string>;

int statusOf(pid_t pid) {
    int status = -1;
    EXPECT_EQ(::waitpid(pid, &status, 0), pid);
    return status;
}

class StartProgram : public ::testing::Test {
  protected:
    Lines reportOf(std::vector<std::string> arguments, StandardStreams streams) {
        arguments.insert(arguments.begin(), CHILD_REPORT);
        const pid_t pid = startProgram(arguments, streams);
        EXPECT_GT(pid, 0);
        EXPECT_EQ(statusOf(pid), 0);
        return reports.next();
    }

    test::ScratchDirectory scratch;
    ChildReports reports{scratch};
};

TEST_F(StartProgram, PassesTheArguments) {
    const Lines report = reportOf({"a b", "", "%s\"'"}, StandardStreams::Closed);
    EXPECT_EQ(ChildReports::valuesOf(report, "argument"),
              (Lines{CHILD_REPORT, "a b", "", "%s\"'"}));
}

TEST_F(StartProgram, PassesAtMost255Arguments) {
    std::vector<std::string> many;
    for (int i = 1; i <= 300; ++i) {
        many.push_back(std::to_string(i));
    }
    const Lines seen = ChildReports::valuesOf(reportOf(many, StandardStreams::Closed), "argument");
    ASSERT_EQ(seen.size(), 256U);
    EXPECT_EQ(seen.back(), "255");
}

TEST_F(StartProgram, LeavesNoDescriptorOpen) {
    const FileDesc inherited(::open("/dev/null", O_RDONLY));  // not close-on-exec
    const FileDesc high(::fcntl(inherited, F_DUPFD, 500));
    EXPECT_EQ(ChildReports::valuesOf(reportOf({}, StandardStreams::Closed), "descriptor"), Lines{});
}

TEST_F(StartProgram, GivesTheNullDeviceWhenAsked) {
    const FileDesc inherited(::open("/dev/zero", O_RDONLY));
    Lines seen = ChildReports::valuesOf(reportOf({}, StandardStreams::NullDevice), "descriptor");
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(seen, (Lines{"0 /dev/null", "1 /dev/null", "2 /dev/null"}));
}

TEST_F(StartProgram, GivesANullDeviceThatCanBeReadAndWritten) {
    const std::string script = "echo lost && echo lost >&2 && ! read line";
    EXPECT_EQ(statusOf(startProgram({"/bin/sh", "-c", script}, StandardStreams::NullDevice)), 0);
}

TEST_F(StartProgram, ResetsTheSignalMaskAndAllDispositions) {
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, &previous);
    const test::SignalAction pipe(SIGPIPE, SIG_IGN);
    const test::SignalAction user(SIGUSR1, [](int) {});
    const test::SignalAction child(SIGCHLD, [](int) {});
    const Lines report = reportOf({}, StandardStreams::Closed);
    ::sigprocmask(SIG_SETMASK, &previous, nullptr);
    for (const char* set : {"SigBlk:", "SigIgn:", "SigCgt:"}) {
        EXPECT_EQ(ChildReports::valuesOf(report, set), Lines{"0000000000000000"}) << set;
    }
}

TEST_F(StartProgram, SearchesThePathForANameWithoutASlash) {
    ASSERT_EQ(::symlink(CHILD_REPORT, (scratch / "some-program").c_str()), 0);
    const test::EnvironmentVariable path("PATH", "/nowhere:" + scratch.path());
    const pid_t pid = startProgram({"some-program"}, StandardStreams::Closed);
    EXPECT_EQ(statusOf(pid), 0);
    EXPECT_EQ(reports.nextArguments(), Lines{"some-program"});
}

TEST_F(StartProgram, EndsTheChildWithStatus255WhenItCannotBeExecuted) {
    for (const std::string& program :
         {scratch / "missing", scratch.path(), scratch.file("plain", "x"), std::string("")}) {
        const int status = statusOf(startProgram({program}, StandardStreams::Closed));
        EXPECT_TRUE(WIFEXITED(status)) << program;
        EXPECT_EQ(WEXITSTATUS(status), 255) << program;
    }
}

TEST_F(StartProgram, RunsNoExitHandlerInAChildThatCannotBeExecuted) {
    static const pid_t parent = ::getpid();
    const auto handler = [] {
        if (::getpid() != parent) {
            ::_exit(1);
        }
    };
    ASSERT_EQ(std::atexit(handler), 0);
    const int status = statusOf(startProgram({scratch / "missing"}, StandardStreams::Closed));
    EXPECT_EQ(WEXITSTATUS(status), 255);
}

TEST_F(StartProgram, LeavesTheDescriptorsAndSignalsOfTheParentAlone) {
    const int before = test::nextDescriptor();
    sigset_t mask;
    sigset_t after;
    ::sigprocmask(SIG_BLOCK, nullptr, &mask);
    reportOf({}, StandardStreams::NullDevice);
    ::sigprocmask(SIG_BLOCK, nullptr, &after);
    EXPECT_EQ(test::nextDescriptor(), before);
    EXPECT_EQ(sigismember(&after, SIGCHLD), sigismember(&mask, SIGCHLD));
}

TEST(CloseAll, ClosesFromTheGivenDescriptorOn) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int low = ::open("/dev/null", O_RDONLY);
        const int high = ::fcntl(low, F_DUPFD, 300);
        closeAll(low + 1);
        const bool right = ::fcntl(low, F_GETFD) != -1 && ::fcntl(high, F_GETFD) == -1;
        ::_exit(right ? 0 : 1);
    }
    EXPECT_EQ(statusOf(pid), 0);
}

}  // namespace
}  // namespace corvane
