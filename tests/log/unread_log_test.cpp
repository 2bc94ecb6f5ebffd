// Logs that nobody reads: a pipe without room, for which a write waits.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <ctime>
#include <string>

#include "log/crash_flush.h"
#include "platform/file_desc.h"
#include "platform/waiting.h"
#include "support/held_signals.h"
#include "support/log_file_fixture.h"
#include "support/signal_action.h"
#include "support/wait_until.h"

namespace corvane {
namespace {

class UnreadLog : public test::LogFileTest {
  protected:
    UnreadLog() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe(ends.data()), 0);
        reader = FileDesc(ends[0]);
        writer = FileDesc(ends[1]);
        open(::dup(writer));
    }

    void fill() const {
        ::fcntl(writer, F_SETFL, O_NONBLOCK);
        while (::write(writer, "x", 1) == 1) {
        }
        ::fcntl(writer, F_SETFL, 0);
    }
    template <typename Work>
    static bool inChild(Work work) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::alarm(20);  // instead of hanging for ever
            ::_exit(work() ? 0 : 1);
        }
        int status = -1;
        ::waitpid(pid, &status, 0);
        return status == 0;
    }
    static constexpr int soon = 2;
    std::string lateLine(int alarmsUntilThereIsRoom = soon);
    static bool isPending(int sig) {
        sigset_t pending;
        ::sigpending(&pending);
        return sigismember(&pending, sig) == 1;
    }

    FileDesc reader;
    FileDesc writer;
};

TEST_F(UnreadLog, DoesNotHoldATerminationUp) {
    fill();
    for (const int sig : {SIGTERM, SIGINT}) {
        EXPECT_TRUE(inChild([&] {
            const test::SignalAction handler(sig, [](int) { ::_exit(2); });
            const HeldSignals signals;
            ::raise(sig);
            log.info("unread");
            ::_exit(stopRequested() && isPending(sig) ? 0 : 1);  // while it is held
            return false;
        }));
    }
}

TEST_F(UnreadLog, DoesNotHoldATerminationUpThatComesLater) {
    fill();
    EXPECT_TRUE(inChild([this] {
        const HeldSignals signals;
        const pid_t parent = ::getpid();
        if (::fork() == 0) {
            // Sent again and again: it may come before the write.
            while (::getppid() == parent) {
                ::kill(parent, SIGINT);
                ::usleep(10'000);
            }
            ::_exit(0);
        }
        log.info("unread");
        ::_exit(stopRequested() ? 0 : 1);
        return false;
    }));
}

TEST_F(UnreadLog, DropsLinesOnceAStopIsAskedFor) {
    fill();
    EXPECT_TRUE(inChild([this] {
        const HeldSignals signals;
        requestStop();
        for (int i = 0; i < 100; ++i) {
            log.info("unread");
        }
        return (::fcntl(writer, F_GETFL) & O_NONBLOCK) == 0;  // others share the open file
    }));
}

int readEnd = -1;
int alarms = 0;
int lastAlarm = 0;

// What arrives of a line for which a handler makes room, but not at once.
std::string UnreadLog::lateLine(int alarmsUntilThereIsRoom) {
    readEnd = reader;
    alarms = 0;
    lastAlarm = alarmsUntilThereIsRoom;
    struct sigaction action {};
    struct sigaction previous {};
    // The last one makes room; those before only interrupt.
    action.sa_handler = [](int) {
        std::array<char, 65536> block{};
        if (++alarms == lastAlarm) {
            static_cast<void>(::read(readEnd, block.data(), block.size()));
        }
    };
    EXPECT_EQ(::sigaction(SIGALRM, &action, &previous), 0);
    const itimerval often{{0, 10'000}, {0, 10'000}};
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    log.info("line");
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &previous, nullptr);
    EXPECT_GE(alarms, lastAlarm);
    std::array<char, 100> rest{};
    ::fcntl(reader, F_SETFL, O_NONBLOCK);  // instead of waiting for a line that is lost
    const ssize_t count = ::read(reader, rest.data(), rest.size());
    return {rest.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

TEST_F(UnreadLog, LosesNothingThroughSignalsThatInterruptIt) {
    fill();
    EXPECT_EQ(lateLine(), "INFO    : line\n");
}

// As other programs that share the console may leave it.
TEST_F(UnreadLog, LosesNothingWhereItsFileDoesNotWait) {
    fill();
    ::fcntl(writer, F_SETFL, O_NONBLOCK);
    EXPECT_EQ(lateLine(), "INFO    : line\n");
}

TEST_F(UnreadLog, DoesNotHoldASignalUpThatEndsTheProcess) {
    fill();
    const pid_t pid = ::fork();
    if (pid == 0) {
        static_cast<void>(::signal(SIGHUP, SIG_DFL));
        flushLogOnFatalSignals();
        const LogBatch batch;
        log.info("unread");
        ::raise(SIGHUP);
        ::_exit(1);
    }
    int status = -1;
    if (!test::waitUntil([&] { return ::waitpid(pid, &status, WNOHANG) == pid; })) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
    }
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGHUP) << status;
}

TEST_F(UnreadLog, CostsNothingWhileItWaitsWhereItsFileDoesNot) {
    constexpr std::clock_t little = CLOCKS_PER_SEC / 20;
    fill();
    ::fcntl(writer, F_SETFL, O_NONBLOCK);
    const std::clock_t before = std::clock();
    EXPECT_EQ(lateLine(50), "INFO    : line\n");  // half a second
    EXPECT_LT(std::clock() - before, little);
}

}  // namespace
}  // namespace corvane
