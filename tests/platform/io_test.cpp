// Reading and writing where the other end is slow, and where signals come in between.
#include "platform/io.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>

#include "platform/file_desc.h"
#include "platform/waiting.h"
#include "support/held_signals.h"
#include "support/resource_limit.h"
#include "support/signal_action.h"

namespace corvane {
namespace {

constexpr std::size_t muchMoreThanAPipeHolds = 1'000'000;

int lateSink = -1;  // where a signal handler writes

/// A pipe of which the end for writing does not wait.
class IoTest : public testing::Test {
  protected:
    IoTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe(ends.data()), 0);
        source = FileDesc(ends[0]);
        sink = FileDesc(ends[1]);
        EXPECT_EQ(::fcntl(sink, F_SETFL, O_NONBLOCK), 0);
        running = this;
        lateSink = sink;
    }
    ~IoTest() override {
        beforeEveryWait([]() noexcept {});
    }

    // Reads what the pipe holds whenever the code under test begins to wait.
    static void readDuringWaits() {
        beforeEveryWait([]() noexcept {
            ++running->waits;
            std::array<char, 65536> block{};
            const ssize_t count = ::read(running->source, block.data(), block.size());
            running->received.append(block.data(), static_cast<std::size_t>(count));
        });
    }
    void fillPipe() {
        while (::write(sink, "x", 1) == 1) {
        }
    }
    // Whether `work` returns true in a process of its own.
    template <typename Work>
    static bool inChild(Work work) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::_exit(work() ? 0 : 1);
        }
        int status = -1;
        ::waitpid(pid, &status, 0);
        return status == 0;
    }

    static inline IoTest* running = nullptr;
    FileDesc source;
    FileDesc sink;
    std::string received;
    int waits = 0;
};

TEST_F(IoTest, WritesMoreThanTheOtherEndTakesAtOnce) {
    readDuringWaits();
    std::string text(muchMoreThanAPipeHolds, 'a');
    text += "end";
    ASSERT_TRUE(writeAll(sink, text));
    EXPECT_GT(waits, 1);
    const std::size_t before = received.size();
    received.resize(text.size());
    EXPECT_EQ(readAll(source, std::span(received).subspan(before)),
              static_cast<ssize_t>(text.size() - before));
    EXPECT_TRUE(received == text);
}

TEST_F(IoTest, WritesToADescriptorThatIsTooLargeForSelect) {
    rlimit limits{};
    ::getrlimit(RLIMIT_NOFILE, &limits);
    if (limits.rlim_max < FD_SETSIZE + 64) {
        GTEST_SKIP() << "the number of descriptors cannot be raised far enough";
    }
    const test::ResourceLimit many(RLIMIT_NOFILE, FD_SETSIZE + 64);
    const FileDesc high(::fcntl(sink, F_DUPFD_CLOEXEC, FD_SETSIZE));
    readDuringWaits();
    EXPECT_TRUE(writeAll(high, std::string(muchMoreThanAPipeHolds, 'a')));
    EXPECT_GT(waits, 1);
    beforeEveryWait([]() noexcept {});
    fillPipe();
    EXPECT_FALSE(waitForSocket(high, Direction::Write, deadlineAfter(-1)));
}

TEST_F(IoTest, GivesUpWhenTheProgramHasToStop) {
    EXPECT_TRUE(inChild([this] {
        fillPipe();
        requestStop();
        return !writeAll(sink, "x") && errno == EINTR && !letCloseDrain(sink) && errno == EINTR;
    }));
}

TEST_F(IoTest, LetsSignalsInWhileItWaits) {
    EXPECT_TRUE(inChild([this] {
        fillPipe();
        const test::SignalAction stop(SIGTERM, [](int) { requestStop(); });
        const HeldSignals signals;
        ::raise(SIGTERM);
        return !writeAll(sink, "x") && errno == EINTR;
    }));
}

TEST_F(IoTest, ReportsAnErrorOfWriting) {
    EXPECT_FALSE(writeAll(-1, "x"));
    EXPECT_EQ(errno, EBADF);
    EXPECT_TRUE(writeAll(-1, ""));
}

TEST_F(IoTest, ReadsOnAfterASignal) {
    // The signal interrupts the read; its handler provides what the second one gets.
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = [](int) { static_cast<void>(::write(lateSink, "late", 4)); };
    ASSERT_EQ(::sigaction(SIGALRM, &action, &previous), 0);
    const itimerval soon{{0, 0}, {0, 10'000}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &soon, nullptr), 0);
    std::array<char, 100> room{};
    EXPECT_EQ(readSome(source, room), 4);
    ::sigaction(SIGALRM, &previous, nullptr);
}

TEST_F(IoTest, ReadsToTheEndOrUntilTheRoomIsFull) {
    std::array<char, 6> room{};
    ASSERT_TRUE(writeAll(sink, "0123456789"));
    EXPECT_EQ(readAll(source, room), 6);
    sink.close();
    EXPECT_EQ(readAll(source, room), 4);
    EXPECT_EQ(readAll(source, room), 0);
    EXPECT_EQ(std::string_view(room.data(), 4), "6789");
}

TEST_F(IoTest, ReportsAnErrorOfReading) {
    std::array<char, 6> room{};
    EXPECT_EQ(readAll(-1, room), -1);
    EXPECT_EQ(errno, EBADF);
    ::fcntl(source, F_SETFL, O_NONBLOCK);
    EXPECT_EQ(readSome(source, room), -1);
    EXPECT_EQ(errno, EAGAIN);
}

TEST_F(IoTest, LeavesADeviceBlockingOnceItTakesMore) {
    fillPipe();
    readDuringWaits();
    ASSERT_TRUE(letCloseDrain(sink));
    EXPECT_EQ(waits, 1);
    EXPECT_EQ(::fcntl(sink, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_FALSE(letCloseDrain(-1));
}

int readEnd = -1;  // where a signal handler makes room
int alarms = 0;

TEST_F(IoTest, WritesOnAfterASignal) {
    fillPipe();
    ::fcntl(sink, F_SETFL, 0);
    readEnd = source;
    alarms = 0;
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = [](int) {
        std::array<char, 65536> block{};
        if (++alarms == 2) {  // the first one only interrupts
            static_cast<void>(::read(readEnd, block.data(), block.size()));
        }
    };
    ASSERT_EQ(::sigaction(SIGALRM, &action, &previous), 0);
    const itimerval often{{0, 10'000}, {0, 10'000}};
    const itimerval never{};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_TRUE(writeAll(sink, "x"));
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &previous, nullptr);
    EXPECT_GE(alarms, 2);
}

}  // namespace
}  // namespace corvane
