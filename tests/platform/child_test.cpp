// Children of every kind of behaviour, their outputs, their status and what is left of them.
#include "platform/child.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>

#include "platform/process.h"
#include "support/child_reports.h"
#include "support/held_signals.h"
#include "support/resource_limit.h"
#include "support/scratch_directory.h"
#include "support/signal_action.h"

namespace corvane {
namespace {

using test::ChildReports;
using Lines = std::vector<std::string>;

bool hasChildren() { return ::waitpid(-1, nullptr, WNOHANG) != -1; }

int exitStatus(const Child& child) {
    const int status = child.status().value();
    return WEXITSTATUS(status);
}

std::vector<std::string> shell(const std::string& script) { return {"sh", "-c", script}; }

TEST(ChildTest, IsWaitedForAndCollected) {
    Child child(Child::Capture::Nothing, Child::Group::Shared,
                [] { becomeProgram(shell("exit 3"), StandardStreams::NullDevice); });
    ASSERT_TRUE(child.waitFor({}));
    EXPECT_EQ(exitStatus(child), 3);
    EXPECT_FALSE(hasChildren());
}

TEST(ChildTest, GivesItsOutputAloneWithTheNullDeviceForTheRest) {
    test::ScratchDirectory scratch;
    ChildReports reports(scratch);
    Child child(Child::Capture::Output, Child::Group::Shared,
                [] { becomeProgram({CHILD_REPORT}, StandardStreams::OutputOnly); });
    ASSERT_TRUE(child.waitFor({}));
    Lines seen = ChildReports::valuesOf(reports.next(), "descriptor");
    std::sort(seen.begin(), seen.end());
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen[0], "0 /dev/null");
    EXPECT_EQ(seen[1].substr(0, 7), "1 pipe:");
    EXPECT_EQ(seen[2], "2 /dev/null");
}

TEST(ChildTest, HasAnOutputThatIsReadToItsEnd) {
    Child child(Child::Capture::Output, Child::Group::Shared, [] {
        becomeProgram(shell("printf one; printf two; printf three >&2"),
                      StandardStreams::OutputOnly);
    });
    ASSERT_TRUE(child.waitFor({}));
    EXPECT_EQ(child.wholeOutput({}), "onetwo");
}

TEST(ChildTest, EndsWithStatus255WhenItBecomesNothing) {
    Child child(Child::Capture::Nothing, Child::Group::Shared, [] {});
    ASSERT_TRUE(child.waitFor({}));
    EXPECT_EQ(exitStatus(child), 255);
}

TEST(ChildTest, IsKilledWhenNobodyHasWaitedForItsEnd) {
    {
        Child child(Child::Capture::Output, Child::Group::Own, [] { ::pause(); });
        EXPECT_FALSE(child.waitFor(deadlineAfter(-1)));
        EXPECT_FALSE(child.status().has_value());
    }
    EXPECT_FALSE(hasChildren());
}

TEST(ChildTest, GoesOnWhenItIsLeft) {
    pid_t left = 0;
    {
        Child child(Child::Capture::Nothing, Child::Group::Shared, [] { ::pause(); });
        EXPECT_FALSE(child.waitFor(deadlineAfter(-1)));
        child.leave();
        left = child.pid();
    }
    EXPECT_EQ(::waitpid(left, nullptr, WNOHANG), 0);
    ::kill(left, SIGKILL);
    EXPECT_EQ(::waitpid(left, nullptr, 0), left);
}

// Each wait for its end would otherwise last as long as the deadline.
TEST(ChildTest, EndsTheWaitAtOnce) {
    const HeldSignals signals;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        Child child(Child::Capture::Nothing, Child::Group::Shared, [] { ::_exit(0); });
        ASSERT_TRUE(child.waitFor(deadlineAfter(60)));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(50));
}

TEST(ChildTest, DoesWhatComesBeforeEveryWaitBeforeItStarts) {
    static int done = 0;
    beforeEveryWait([]() noexcept { ++done; });
    const int before = done;
    const Child child(Child::Capture::Nothing, Child::Group::Shared, [] { ::_exit(0); });
    EXPECT_EQ(done, before + 1);
    const pid_t program = startProgram({"true"}, StandardStreams::NullDevice);
    EXPECT_EQ(done, before + 2);
    EXPECT_EQ(::waitpid(program, nullptr, 0), program);
    beforeEveryWait([]() noexcept {});
}

TEST(ChildTest, LeavesNoDescriptorAndTheSignalsAsTheyWere) {
    const test::SignalAction action(SIGCHLD, SIG_DFL);
    sigset_t child;
    sigset_t previous;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    ::sigprocmask(SIG_UNBLOCK, &child, &previous);
    const int before = test::nextDescriptor();
    {
        Child ended(Child::Capture::OutputAndErrors, Child::Group::Own, [] { ::_exit(0); });
        ended.waitFor({});
    }
    EXPECT_EQ(test::nextDescriptor(), before);
    struct sigaction after {};
    ::sigaction(SIGCHLD, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_DFL);
    sigset_t mask;
    ::sigprocmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGCHLD), 0);
    ::sigprocmask(SIG_SETMASK, &previous, nullptr);
}

// It would never end by itself.
TEST(ChildTest, IsKilledWithoutAGroupOfItsOwnAsWell) {
    {
        const Child child(Child::Capture::Nothing, Child::Group::Shared, [] { ::pause(); });
    }
    EXPECT_FALSE(hasChildren());
}

// As where the system collects the children of a program that ignores their signal.
TEST(ChildTest, TellsThatItsStatusWasLost) {
    Child child(Child::Capture::Nothing, Child::Group::Shared, [] { ::_exit(3); });
    ASSERT_EQ(::waitpid(child.pid(), nullptr, 0), child.pid());
    EXPECT_TRUE(child.waitFor({}));
    EXPECT_EQ(child.waitError(), ECHILD);
    EXPECT_EQ(child.status(), -100);
    EXPECT_EQ(child.exitCode(), 0);
}

}  // namespace
}  // namespace corvane
