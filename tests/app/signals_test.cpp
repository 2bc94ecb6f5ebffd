#include "app/signals.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "support/log_capture.h"

namespace corvane {
namespace {

using Lines = std::vector<std::string>;

pid_t childThatEndsWith(int status) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::_exit(status);
    }
    siginfo_t info;
    ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT);
    return pid;
}

// Expects `work` to return true in a process of its own.
template <typename Work>
void inChild(Work work) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::_exit(work() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(pid, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(ChildSignal, CollectsEveryChildThatHasEnded) {
    childThatEndsWith(0);
    childThatEndsWith(3);
    test::LogCapture log;
    chld_signal(SIGCHLD);
    Lines lines = log.take();
    std::sort(lines.begin(), lines.end());
    const std::string ending = " (sig " + std::to_string(SIGCHLD) + ")";
    EXPECT_EQ(lines, (Lines{"DEBUG corvane.signal.chld child exited with status 0" + ending,
                            "DEBUG corvane.signal.chld child exited with status 768" + ending}));
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(ChildSignal, NeverWaitsForARunningChild) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::pause();
        ::_exit(0);
    }
    const test::LogCapture log;
    chld_signal(SIGCHLD);
    EXPECT_TRUE(log.lines().empty());
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
}

TEST(ChildSignal, LeavesTheErrorNumberAlone) {
    errno = EDOM;
    chld_signal(SIGCHLD);
    EXPECT_EQ(errno, EDOM);
}

struct sigaction actionOf(int sig) {
    struct sigaction action {};
    ::sigaction(sig, nullptr, &action);
    return action;
}

TEST(InstalledHandlers, RunOneAfterTheOtherAndAreNotToldOfStoppedChildren) {
    inChild([] {
        installSignalHandlers();
        bool right = true;
        for (const int sig : {SIGTERM, SIGINT, SIGCHLD}) {
            const struct sigaction action = actionOf(sig);
            right = right && action.sa_handler == (sig == SIGCHLD ? chld_signal : term_signal) &&
                    (action.sa_flags & SA_NOCLDSTOP) != 0 && (action.sa_flags & SA_RESTART) != 0;
            for (const int other : {SIGTERM, SIGINT, SIGCHLD}) {
                right = right && sigismember(&action.sa_mask, other) == 1;
            }
        }
        return right;
    });
}

TEST(SignalsOfWriting, AreIgnoredSinceAnErrorCodeTellsAsWell) {
    inChild([] {
        for (const int sig : {SIGPIPE, SIGXFSZ}) {
            static_cast<void>(::signal(sig, SIG_DFL));
        }
        ignoreSignalsOfWriting();
        return actionOf(SIGPIPE).sa_handler == SIG_IGN && actionOf(SIGXFSZ).sa_handler == SIG_IGN;
    });
}

TEST(TerminationSignal, ClosesTheServersSockets) {
    Server running;
    running.initListener("127.0.0.1", 0);
    server = &running;
    const test::LogCapture log;
    term_signal(SIGTERM);
    EXPECT_EQ(log.lines().front(), "DEBUG corvane.signal.term signal 15 was received");
    EXPECT_TRUE(running.listeners.empty());
    EXPECT_NO_THROW(term_signal(SIGINT));
    server = nullptr;
}

TEST(TerminationSignal, LeavesTheErrorNumberAlone) {
    Server running;
    running.initListener("127.0.0.1", 0);
    server = &running;
    errno = EDOM;
    term_signal(SIGTERM);
    EXPECT_EQ(errno, EDOM);
    server = nullptr;
}

TEST(TerminationSignal, IsOnlyLoggedWhileThereIsNoServer) {
    server = nullptr;
    const test::LogCapture log;
    term_signal(SIGINT);
    EXPECT_EQ(log.lines(), Lines{"DEBUG corvane.signal.term signal 2 was received"});
}

}  // namespace
}  // namespace corvane
