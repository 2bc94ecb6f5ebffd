// Where libkqueue differs from the kqueue of macOS and from epoll: it takes the error of a reset
// out of the socket and a signal out of those that are pending, throws away the signals that were
// pending before, keeps the filter of a descriptor that was closed and (version 2.3) refuses to add
// one a second time. So these tests of the event queue are not run on it.
#include <cerrno>

#include "platform/event_queue_fixture.h"

namespace corvane {
namespace {

TEST_F(OpenEventQueueTest, LeavesTheErrorOfAResetToTheReceiver) {
    const FileDesc sock = watched();
    clients[0].reset();
    EXPECT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_EQ(receive(sock), -1);
    EXPECT_EQ(errno, ECONNRESET);
}

TEST_F(OpenEventQueueTest, ListsASocketAnewThatIsWatchedASecondTime) {
    const FileDesc sock = watched();
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(sock));
    EXPECT_EQ(listed(), Sockets{sock});
    EXPECT_TRUE(queue.watch(sock));
    EXPECT_EQ(listed(), Sockets{sock});
}

TEST_F(OpenEventQueueTest, ForgetsASocketThatIsClosed) {
    FileDesc first = watched();
    const int number = first;
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(first));
    const FileDesc other = accept();
    first.close();
    EXPECT_EQ(listed(), Sockets());
    const FileDesc second(::dup(other));
    ASSERT_EQ(second, number);
    EXPECT_FALSE(queue.rearm(second));
    EXPECT_TRUE(queue.watch(second));
    EXPECT_EQ(listed(), Sockets());
}

TEST_F(EventQueueTest, TellsOfASignalThatWasPendingBeforeItWasOpened) {
    ASSERT_EQ(::kill(::getpid(), SIGALRM), 0);
    queue.open(held);
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_EQ(errno, EINTR);
}

TEST_F(OpenEventQueueTest, TellsOfASignalAsLongAsItIsPending) {
    sendSignalSoon();
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_TRUE(isSignalPending());
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_EQ(errno, EINTR);
    takeSignal();
    while (queue.wait(std::chrono::milliseconds(0), events) == -1) {
    }
    EXPECT_EQ(listed(), Sockets());
}

}  // namespace
}  // namespace corvane
