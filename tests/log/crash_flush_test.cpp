// Signals that end the process while lines are pending.
#include "log/crash_flush.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/system.h"
#include "platform/waiting.h"
#include "support/log_file_fixture.h"
#include "support/sanitized.h"

namespace corvane {
namespace {

class CrashFlush : public test::LogFileTest {
  protected:
    // The wait status of a process that logs a line in a batch and then does `end`.
    template <typename End>
    int statusAfter(End end) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            const rlimit noCore{0, 0};
            ::setrlimit(RLIMIT_CORE, &noCore);
            for (int sig = 1; sig < NSIG; ++sig) {
                static_cast<void>(::signal(sig, SIG_DFL));
            }
            const LogBatch batch;
            end([this] {
                flushLogOnFatalSignals();
                log.info("last words");
            });
            ::_exit(0);
        }
        int status = -1;
        ::waitpid(pid, &status, 0);
        return status;
    }
};

TEST_F(CrashFlush, WritesTheLinesForEverySignalThatEndsTheProcess) {
    for (const int sig :
         {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGSYS, SIGTRAP, SIGHUP, SIGQUIT, SIGUSR1,
          SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF, SIGXCPU, SIGXFSZ, SIGPIPE, SIGTERM, SIGINT}) {
        ::truncate(path.c_str(), 0);
        const int status = statusAfter([sig](auto logLine) {
            logLine();
            ::raise(sig);
        });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == sig) << sig << ": " << status;
        EXPECT_EQ(written(), "INFO    : last words\n") << sig;
    }
}

// Uses what it returns, so that the call is no jump; the numbers never come back to the first.
int overflowStack(volatile int* last) {
    if (*last == -1) {
        return 0;
    }
    volatile int more = *last + 1;
    return overflowStack(&more) + more;
}

TEST_F(CrashFlush, WritesTheLinesWhenTheStackOverflows) {
    if (test::isSanitized) {
        GTEST_SKIP() << "a sanitizer has a handler of its own";
    }
    const int status = statusAfter([](auto logLine) {
        logLine();
        volatile int first = 0;
        static_cast<void>(overflowStack(&first));
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV) << status;
    EXPECT_EQ(written(), "INFO    : last words\n");
}

TEST_F(CrashFlush, LeavesAloneWhatSomebodyElseHandles) {
    const int status = statusAfter([](auto logLine) {
        static_cast<void>(::signal(SIGSEGV, [](int) { ::_exit(7); }));
        static_cast<void>(::signal(SIGHUP, SIG_IGN));
        logLine();
        ::raise(SIGHUP);
        ::raise(SIGSEGV);
    });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
    EXPECT_EQ(written(), "");
}

TEST_F(CrashFlush, LeavesAloneWhatDoesNotEndTheProcess) {
    const int status = statusAfter([](auto logLine) {
        logLine();
        for (const int sig : {SIGCHLD, SIGCONT, SIGURG, SIGWINCH}) {
            struct sigaction action {};
            ::sigaction(sig, nullptr, &action);
            if (action.sa_handler != SIG_DFL) {
                ::_exit(1);
            }
        }
        ::_exit(0);
    });
    EXPECT_EQ(status, 0);
}

TEST_F(CrashFlush, LeavesNoStopBehindWhereTheProcessSurvives) {
    const int status = statusAfter([](auto logLine) {
        logLine();
        struct sigaction action {};
        ::sigaction(SIGUSR1, nullptr, &action);
        static_cast<void>(::signal(SIGUSR1, SIG_IGN));  // as for the first process of a container
        action.sa_handler(SIGUSR1);
        ::_exit(stopRequested() ? 1 : 0);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(written(), "INFO    : last words\n");
}

TEST_F(CrashFlush, KeepsAStopThatWasAskedForBefore) {
    const int status = statusAfter([](auto logLine) {
        logLine();
        requestStop();
        struct sigaction action {};
        ::sigaction(SIGUSR1, nullptr, &action);
        static_cast<void>(::signal(SIGUSR1, SIG_IGN));
        action.sa_handler(SIGUSR1);
        ::_exit(stopRequested() ? 0 : 1);
    });
    EXPECT_EQ(status, 0);
}

TEST_F(CrashFlush, WritesTheLinesForEveryOtherSignalOfTheSystemThatDoesSo) {
    for (int sig = 1; sig < NSIG; ++sig) {
        struct sigaction current {};
        if (sig == SIGKILL || !platform::endsProcessByDefault(sig) ||
            ::sigaction(sig, nullptr, &current) != 0) {  // the C library keeps some to itself
            continue;
        }
        ::truncate(path.c_str(), 0);
        statusAfter([sig](auto logLine) {
            logLine();
            ::raise(sig);
        });
        EXPECT_EQ(written(), "INFO    : last words\n") << sig;
    }
}

}  // namespace
}  // namespace corvane
