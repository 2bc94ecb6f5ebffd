#include "platform/waiting.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "platform/file_desc.h"
#include "support/held_signals.h"
#include "support/resource_limit.h"
#include "support/wait_until.h"

namespace corvane {
namespace {

/// A socket pair, and signals that arrive only in waits.
class WaitingTest : public testing::Test {
  protected:
    WaitingTest() { EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0); }
    ~WaitingTest() override {
        ::close(pair[0]);
        ::close(pair[1]);
    }

    int waitForPair() {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(pair[0], &readable);
        return waitForSockets(pair[0] + 1, &readable, nullptr, deadlineAfter(1));
    }

    /// The first of the pair once more, with a number that does not fit into an fd_set; -1 where
    /// there is none.
    FileDesc highDescriptor() const {
        rlimit limits{};
        ::getrlimit(RLIMIT_NOFILE, &limits);
        if (limits.rlim_max < FD_SETSIZE + 64) {
            return FileDesc();
        }
        const test::ResourceLimit many(RLIMIT_NOFILE, FD_SETSIZE + 64);
        return FileDesc(::fcntl(pair[0], F_DUPFD_CLOEXEC, FD_SETSIZE));
    }

    std::array<int, 2> pair{};
    HeldSignals signals;
};

TEST_F(WaitingTest, LetsSignalsInOnlyWhileItWaits) {
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(signals.handled(), 0);
    errno = 0;
    EXPECT_EQ(waitForPair(), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(signals.handled(), 1);
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(signals.handled(), 1);
}

TEST_F(WaitingTest, LetsSignalsInEvenWhenASocketIsReadyAtOnce) {
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_TRUE(test::waitUntil([this] { return waitForPair() == -1; }));
    EXPECT_EQ(signals.handled(), 1);
    EXPECT_EQ(waitForPair(), 1);
}

TEST_F(WaitingTest, LetsSignalsInWhereADescriptorIsTooLargeForSelect) {
    const FileDesc high = highDescriptor();
    if (high == -1) {
        GTEST_SKIP() << "the number of descriptors cannot be raised far enough";
    }
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_TRUE(waitForSocket(high, Direction::Read, deadlineAfter(1)));
    EXPECT_EQ(signals.handled(), 1);
}

TEST_F(WaitingTest, TellsReadingAndWritingApartWhereADescriptorIsTooLargeForSelect) {
    const FileDesc high = highDescriptor();
    if (high == -1) {
        GTEST_SKIP() << "the number of descriptors cannot be raised far enough";
    }
    EXPECT_FALSE(waitForSocket(high, Direction::Read, deadlineAfter(-1)));
    EXPECT_TRUE(waitForSocket(high, Direction::Write, deadlineAfter(1)));
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    EXPECT_TRUE(waitForSocket(high, Direction::Read, deadlineAfter(1)));
}

TEST_F(WaitingTest, DeliversSignalsInBetween) {
    EXPECT_FALSE(deliverPendingSignals());
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_TRUE(deliverPendingSignals());
    EXPECT_EQ(signals.handled(), 1);
    EXPECT_FALSE(deliverPendingSignals());
}

TEST_F(WaitingTest, HoldsTheSignalsThatTheServerHandles) {
    sigset_t blocked;
    ASSERT_EQ(::sigprocmask(SIG_SETMASK, nullptr, &blocked), 0);
    for (const int sig : {SIGTERM, SIGINT, SIGCHLD}) {
        EXPECT_EQ(sigismember(&heldSignals(), sig), 1);
        EXPECT_EQ(sigismember(&blocked, sig), 1);
    }
}

TEST_F(WaitingTest, EndsAtTheDeadline) {
    EXPECT_EQ(waitForPair(), 0);
    EXPECT_FALSE(waitForSocket(pair[0], Direction::Read, deadlineAfter(-1)));
}

TEST_F(WaitingTest, TellsReadingAndWritingApart) {
    EXPECT_TRUE(waitForSocket(pair[0], Direction::Write, deadlineAfter(1)));
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    EXPECT_TRUE(waitForSocket(pair[0], Direction::Read, deadlineAfter(1)));
}

TEST(DeadlineAfter, ZeroSecondsIsNone) {
    EXPECT_FALSE(deadlineAfter(0).has_value());
    EXPECT_TRUE(deadlineAfter(1).has_value());
}

TEST(Earlier, IsTheDeadlineThatPassesFirstWhicheverIsSet) {
    const Deadline soon = deadlineAfter(1);
    const Deadline late = deadlineAfter(2);
    EXPECT_EQ(earlier(soon, late), soon);
    EXPECT_EQ(earlier(late, soon), soon);
    EXPECT_EQ(earlier(soon, {}), soon);
    EXPECT_EQ(earlier({}, soon), soon);
    EXPECT_FALSE(earlier({}, {}).has_value());
}

}  // namespace
}  // namespace corvane
