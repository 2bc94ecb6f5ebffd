// The system's event queue. The macOS one is tested on Linux as well: on a stand-in for the
// kernel's half (tests/platform/macos), and on libkqueue where that is installed.
#include "platform/event_queue.h"

#include <algorithm>
#include <cerrno>

#include "platform/event_queue_fixture.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;
using testing::UnorderedElementsAreArray;

TEST_F(OpenEventQueueTest, ListsASocketOnceEachTimeThatSomethingArrives) {
    const FileDesc sock = watched();
    EXPECT_EQ(listed(), Sockets());
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(sock));
    EXPECT_EQ(listed(), Sockets{sock});
    EXPECT_EQ(listed(), Sockets());
    clients[0].send("b");
    EXPECT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_EQ(sockets(), Sockets{sock});
}

TEST_F(OpenEventQueueTest, ListsASocketThatIsReadableWhenItIsWatched) {
    const FileDesc sock = accept();
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(sock));
    EXPECT_TRUE(queue.watch(sock));
    EXPECT_EQ(listed(), Sockets{sock});
}

TEST_F(OpenEventQueueTest, ListsARearmedSocketIfSomethingIsLeft) {
    const FileDesc sock = watched();
    clients[0].send("ab");
    ASSERT_TRUE(willBeReady(sock));
    EXPECT_EQ(listed(), Sockets{sock});
    EXPECT_EQ(receive(sock, 1), 1);
    EXPECT_TRUE(queue.rearm(sock));
    EXPECT_EQ(listed(), Sockets{sock});
    EXPECT_EQ(receive(sock), 1);
    EXPECT_TRUE(queue.rearm(sock));
    EXPECT_EQ(listed(), Sockets());
}

TEST_F(OpenEventQueueTest, HasASocketRearmedWhoseEndCameTogetherWithBytes) {
    const FileDesc sock = watched();
    clients[0].send("a");
    clients[0].finishSending();
    ASSERT_TRUE(test::waitUntil([&] {
        std::array<char, 2> block{};
        return isReady(sock) && ::recv(sock, block.data(), 2, MSG_PEEK) == 1;
    }));
    ASSERT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_TRUE(test::waitUntil([&] { return events.back().needsRearm || !listed().empty(); }));
    EXPECT_EQ(receive(sock), 1);
    EXPECT_TRUE(queue.rearm(sock));
    EXPECT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_EQ(receive(sock), 0);
}

TEST_F(OpenEventQueueTest, ListsASocketThatWasReset) {
    const FileDesc sock = watched();
    clients[0].reset();
    EXPECT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_LE(receive(sock), 0);
}

TEST_F(OpenEventQueueTest, ListsNoUrgentByteButHasWhatItPartsRearmed) {
    const FileDesc sock = watched();
    clients[0].sendUrgent('u');
    ASSERT_TRUE(willBeReady(sock, POLLPRI));
    EXPECT_EQ(listed(), Sockets());
    clients[0].send("bytes");
    clients[0].sendUrgent('v');
    clients[0].send("more");
    ASSERT_TRUE(willBeReady(sock));
    ASSERT_TRUE(willBeReady(sock, POLLPRI));
    ASSERT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_TRUE(events.back().needsRearm);
    EXPECT_LT(receive(sock), 9) << "the urgent byte parts them";
    EXPECT_TRUE(queue.rearm(sock));
    EXPECT_EQ(queue.wait(std::nullopt, events), 1);
    EXPECT_GT(receive(sock), 0);
}

TEST_F(OpenEventQueueTest, ListsAListenerForEachConnectionThatIsLeft) {
    ASSERT_TRUE(queue.watch(listener));
    clients.emplace_back(port);
    clients.emplace_back(port);
    ASSERT_TRUE(willBeReady(listener));
    EXPECT_EQ(listed(), Sockets{listener});
    for (const bool another : {true, false}) {
        const FileDesc sock(::accept(listener, nullptr, nullptr));
        EXPECT_TRUE(queue.rearm(listener));
        EXPECT_EQ(listed().size(), another ? 1U : 0U);
    }
}

TEST_F(OpenEventQueueTest, ListsManySocketsAtOnce) {
    std::vector<FileDesc> socks;
    Sockets numbers;
    for (int i = 0; i < 100; ++i) {
        socks.push_back(watched());
        numbers.push_back(socks.back());
        clients.back().send("x");
    }
    ASSERT_TRUE(std::all_of(numbers.begin(), numbers.end(), [](int s) { return willBeReady(s); }));
    EXPECT_THAT(listed(), UnorderedElementsAreArray(numbers));
}

TEST_F(OpenEventQueueTest, ListsNoSocketThatIsNotWatched) {
    FileDesc sock = watched();
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(sock));
    queue.unwatch(sock);
    EXPECT_EQ(listed(), Sockets());
    EXPECT_FALSE(queue.rearm(sock));
    EXPECT_EQ(listed(), Sockets());
    queue.unwatch(sock);
    EXPECT_TRUE(queue.watch(sock));
    EXPECT_EQ(listed(), Sockets{sock});
}

TEST_F(OpenEventQueueTest, WatchesADescriptorThatIsUsedAgain) {
    FileDesc first = watched();
    const int number = first;
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(first));
    queue.unwatch(first);
    const FileDesc other = accept();
    first.close();
    const FileDesc second(::dup(other));
    ASSERT_EQ(second, number);
    EXPECT_TRUE(queue.watch(second));
    EXPECT_EQ(listed(), Sockets());
    clients[1].send("b");
    EXPECT_EQ(queue.wait(std::nullopt, events), 1);
}

TEST_F(OpenEventQueueTest, RefusesADescriptorThatIsNotOpen) {
    FileDesc sock = accept();
    const int number = sock;
    sock.close();
    EXPECT_FALSE(queue.watch(number));
    EXPECT_FALSE(queue.rearm(number));
}

TEST_F(EventQueueTest, DoesNothingBeforeItIsOpen) {
    const FileDesc sock = accept();
    EXPECT_FALSE(queue.watch(sock));
    EXPECT_FALSE(queue.rearm(sock));
    EXPECT_EQ(queue.wait(milliseconds(0), events), -1);
    EXPECT_NE(errno, EINTR);
}

TEST_F(OpenEventQueueTest, TellsOfASignalForTheThreadAndOfSocketsWithIt) {
    const FileDesc sock = watched();
    clients[0].send("a");
    ASSERT_TRUE(willBeReady(sock));
    ASSERT_EQ(::raise(SIGALRM), 0);
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(sockets(), Sockets{sock});
}

TEST_F(OpenEventQueueTest, TellsOfASignalThatArrivesDuringTheWait) {
    sendSignalSoon();
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(sockets(), Sockets());
}

TEST_F(OpenEventQueueTest, TellsNothingOfOtherSignals) {
    sigset_t other;
    sigemptyset(&other);
    sigaddset(&other, SIGUSR2);
    ::sigprocmask(SIG_BLOCK, &other, nullptr);
    ASSERT_EQ(::raise(SIGUSR2), 0);
    EXPECT_EQ(queue.wait(milliseconds(0), events), 0);
    const test::SignalAction ignored(SIGUSR2, SIG_IGN);
}

TEST_F(OpenEventQueueTest, WaitsNoLongerThanItIsTold) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(queue.wait(milliseconds(20), events), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(20));
}

// The time limits of epoll_wait are numbers of 32 bits.
TEST_F(OpenEventQueueTest, DoesNotCutWaitsOfManyDaysShort) {
    for (const auto limit :
         {milliseconds(1L << 32), milliseconds((1L << 32) + 1), milliseconds::max()}) {
        sendSignalSoon();
        EXPECT_EQ(queue.wait(limit, events), -1) << limit.count();
        EXPECT_EQ(errno, EINTR);
        takeSignal();
        while (queue.wait(milliseconds(0), events) == -1) {
        }
    }
}

}  // namespace
}  // namespace corvane
