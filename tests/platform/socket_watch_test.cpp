#include "platform/socket_watch.h"

#include <sys/resource.h>
#include <unistd.h>

#include <string>

#include "platform/socket_watch_fixture.h"
#include "support/held_signals.h"

namespace corvane {
namespace {

using test::isReadable;
using test::Sockets;
using test::willBeReadable;

class SocketWatchTest : public test::SocketWatchFixture {
  protected:
    /// More sockets than the queue lists at a time, each readable.
    Sockets connectMany() {
        constexpr int many = 100;
        Sockets all;
        for (int i = 0; i < many; ++i) {
            all.insert(connect());
            client().send("x");
        }
        EXPECT_TRUE(std::all_of(all.begin(), all.end(), willBeReadable));
        return all;
    }
};

TEST_P(SocketWatchTest, ListsASocketUntilItIsDrained) {
    const int sock = connect();
    EXPECT_EQ(found(), Sockets());
    client().send("bytes");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
    EXPECT_EQ(receive(sock, 3), 3);
    EXPECT_EQ(found(), Sockets{sock});
    EXPECT_EQ(receive(sock), 2);
    EXPECT_EQ(found(), Sockets());
    client().send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
}

TEST_P(SocketWatchTest, ListsWhatArrivedBeforeTheSocketWasWatched) {
    clients.emplace_back(port);
    client().send("x");
    const int sock = accept();
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets());
    sockets.watch(sock);
    EXPECT_EQ(found(), Sockets{sock});
}

TEST_P(SocketWatchTest, ListsAHangUpThatCameTogetherWithBytes) {
    const int sock = connect();
    client().send("bytes");
    client().finishSending();
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
    EXPECT_EQ(receive(sock), 5);
    EXPECT_EQ(wait(std::nullopt), 1);
    EXPECT_EQ(receive(sock), 0);
}

TEST_P(SocketWatchTest, ListsWhatFollowsAnUrgentByteButNotThatAlone) {
    const int sock = connect();
    client().sendUrgent('u');
    ASSERT_TRUE(test::waitUntil([sock] {
        pollfd state{sock, POLLPRI, 0};
        return ::poll(&state, 1, 0) == 1;
    }));
    EXPECT_EQ(found(), Sockets());
    client().send("bytes");
    client().sendUrgent('v');
    client().send("more");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
    EXPECT_LT(receive(sock), 9) << "the urgent byte parts them";
    EXPECT_EQ(wait(std::nullopt), 1);
    EXPECT_GT(receive(sock), 0);
}

TEST_P(SocketWatchTest, ListsAReset) {
    const int sock = connect();
    EXPECT_EQ(found(), Sockets());
    client().reset();
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
    EXPECT_EQ(receive(sock), -1);
}

TEST_P(SocketWatchTest, ListsAReArmedSocketWhenSomethingIsLeft) {
    sockets.watch(listener);
    clients.emplace_back(port);
    clients.emplace_back(port);
    ASSERT_TRUE(willBeReadable(listener));
    EXPECT_EQ(found(), Sockets{listener});
    for (const Sockets& left : {Sockets{listener}, Sockets()}) {
        readable.clear();
        accept();
        sockets.rearm(listener);
        EXPECT_EQ(found(), left);
    }
}

TEST_P(SocketWatchTest, ListsAReArmedSocketThatTheQueueHasLost) {
    const int sock = connect();
    client().send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
    clients.emplace_back(port);
    client().send("y");
    const int other = accept();
    ASSERT_TRUE(willBeReadable(other));
    ASSERT_EQ(::dup2(other, sock), sock);  // what the queue knew by this number is closed
    readable.clear();
    sockets.rearm(sock);
    EXPECT_EQ(found(), Sockets{sock});
}

TEST_P(SocketWatchTest, ListsASocketOnlyWhileItIsWatched) {
    const int sock = connect();
    client().send("x");
    ASSERT_TRUE(willBeReadable(sock));
    forget(sock);
    sockets.watch(sock);
    sockets.unwatch(sock);
    sockets.unwatch(sock);
    EXPECT_EQ(found(), Sockets());
    sockets.rearm(sock);
    EXPECT_EQ(found(), Sockets());
    sockets.watch(sock);
    sockets.watch(sock);
    EXPECT_EQ(found(), Sockets{sock});
}

TEST_P(SocketWatchTest, TakesADescriptorThatIsUsedAgainForAnotherSocket) {
    const int sock = connect();
    client().send("x");
    ASSERT_TRUE(willBeReadable(sock));
    clients.emplace_back(port);
    forget(sock);
    ends.back().close();
    ASSERT_EQ(accept(), sock);
    sockets.watch(sock);
    EXPECT_EQ(found(), Sockets());
    client().send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found(), Sockets{sock});
}

TEST_P(SocketWatchTest, ListsAllAtOnce) {
    const Sockets all = connectMany();
    EXPECT_EQ(found(), all);
}

TEST_P(SocketWatchTest, WaitsUntilTheDeadline) {
    connect();
    EXPECT_EQ(wait(deadlineAfter(1)), 0);
    client().send("x");
    EXPECT_EQ(wait(std::nullopt), 1);
}

TEST_P(SocketWatchTest, LetsSignalsInWhileItWaits) {
    const HeldSignals signals;
    connect();
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(wait(std::nullopt), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(signals.handled(), 1);
}

TEST_P(SocketWatchTest, LosesNoSocketWhenASignalEndsTheWait) {
    const HeldSignals signals;
    const Sockets all = connectMany();
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_TRUE(test::waitUntil([&] { return wait(std::nullopt) == -1; }));
    EXPECT_EQ(signals.handled(), 1);
    EXPECT_EQ(found(), all);
}

TEST_P(SocketWatchTest, DoesWhatComesBeforeEveryWait) {
    static int done = 0;
    beforeEveryWait([]() noexcept { ++done; });
    found();
    beforeEveryWait([]() noexcept {});
    EXPECT_GT(done, 0);
    done = 0;
}

TEST_P(SocketWatchTest, FailsForADescriptorThatIsNotOpen) {
    const int closed = ::dup(listener);
    ::close(closed);
    sockets.watch(closed);
    EXPECT_EQ(wait(std::nullopt), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(SocketWatch, ListsSocketsWithoutTheQueueWhenNoDescriptorIsLeftForIt) {
    std::array<int, 2> pair{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const int lowestFree = ::dup(pair[0]);
    ::close(lowestFree);
    SocketWatch sockets;
    for (const int left : {0, 1}) {
        const rlimit few{static_cast<rlim_t>(lowestFree + left), limit.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        sockets.open();
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
        const int next = ::dup(pair[0]);
        EXPECT_EQ(next, lowestFree) << "none is kept";
        ::close(next);
    }
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    sockets.watch(pair[0]);
    EXPECT_EQ(sockets.wait(std::nullopt), 1);
    ASSERT_EQ(sockets.events().size(), 1U);
    EXPECT_EQ(sockets.events().front().sock, pair[0]);
    ::close(pair[0]);
    ::close(pair[1]);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutTheQueue, SocketWatchTest, testing::Bool(),
                         [](const auto& mode) {
                             return std::string(mode.param ? "Queue" : "Select");
                         });

}  // namespace
}  // namespace corvane
