// Logs that nobody reads: a pipe without room, for which a write waits.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

#include "platform/file_desc.h"
#include "platform/waiting.h"
#include "support/held_signals.h"
#include "support/log_file_fixture.h"
#include "support/signal_action.h"

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

TEST_F(UnreadLog, LosesNothingThroughSignalsThatInterruptIt) {
    const int lines = 20'000;
    const pid_t pid = ::fork();
    if (pid == 0) {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &action, nullptr);
        const itimerval often{{0, 200}, {0, 200}};
        ::setitimer(ITIMER_REAL, &often, nullptr);
        const HeldSignals signals;
        for (int i = 0; i < lines; ++i) {
            log.info("line");
        }
        ::_exit(0);
    }
    close();
    writer.close();
    std::string text;
    std::array<char, 512> block{};
    ssize_t count = 0;
    while ((count = ::read(reader, block.data(), block.size())) > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    ::waitpid(pid, nullptr, 0);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), lines);
    EXPECT_EQ(text.size(), std::string("INFO    : line\n").size() * lines);
}

}  // namespace
}  // namespace corvane
