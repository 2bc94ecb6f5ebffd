#include "server/readable_sockets.h"

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "server/server_fixture.h"
#include "support/held_signals.h"
#include "support/wait_until.h"

namespace corvane {
namespace {

using Sockets = std::set<int>;

/// With the system's event queue, and without it.
class ReadableSocketsTest : public ServerFixture, public testing::WithParamInterface<bool> {
  protected:
    ReadableSocketsTest() {
        if (GetParam()) {
            sockets.prepare();
        }
    }

    /// What wait() returns.
    int wait(const Sockets& watched, const Deadline& deadline) {
        fd_set set;
        FD_ZERO(&set);
        for (const int sock : watched) {
            FD_SET(sock, &set);
        }
        const int end = watched.empty() ? 0 : *watched.rbegin() + 1;
        return sockets.wait(end, set, deadline);
    }

    /// Those that are found without waiting.
    Sockets found(const Sockets& watched) {
        EXPECT_NE(wait(watched, std::chrono::steady_clock::now()), -1);
        Sockets result;
        for (int sock = 0; sock < FD_SETSIZE; ++sock) {
            if (FD_ISSET(sock, &sockets.found())) {
                result.insert(sock);
            }
        }
        return result;
    }

    static bool isReadable(int sock) {
        pollfd state{sock, POLLIN, 0};
        return ::poll(&state, 1, 0) == 1;
    }
    static bool willBeReadable(int sock) {
        return test::waitUntil([sock] { return isReadable(sock); });
    }

    /// Receives up to `size` bytes as the server does; returns what recv returned.
    ssize_t receive(int sock, std::size_t size = 100) {
        std::array<char, 100> block{};
        const ssize_t count = ::recv(sock, block.data(), size, MSG_DONTWAIT);
        if ((count > 0 && static_cast<std::size_t>(count) < size) ||
            (count == -1 && errno == EAGAIN)) {
            sockets.emptied(sock);
        }
        return count;
    }

    /// More sockets than the queue lists at a time, each readable.
    Sockets connectMany() {
        constexpr int many = 100;
        for (int i = 0; i < many; ++i) {
            clients.push_back(connect());
            clients.back().send("x");
        }
        Sockets all(server.clients.begin(), server.clients.end());
        EXPECT_TRUE(std::all_of(all.begin(), all.end(), willBeReadable));
        return all;
    }

    std::vector<test::ClientSocket> clients;
    ReadableSockets sockets;
};

TEST_P(ReadableSocketsTest, AreFoundUntilTheyAreEmptied) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    EXPECT_EQ(found({sock}), Sockets());
    client.send("bytes");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
    EXPECT_EQ(wait({sock}, std::nullopt), 1) << "nothing has to be waited for";
    EXPECT_EQ(receive(sock, 3), 3);
    EXPECT_EQ(found({sock}), Sockets{sock});
    EXPECT_EQ(receive(sock), 2);
    EXPECT_EQ(found({sock}), Sockets());
    client.send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
}

TEST_P(ReadableSocketsTest, AreFoundWhenTheEndCameTogetherWithTheBytes) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    client.send("bytes");
    client.finishSending();
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
    EXPECT_EQ(receive(sock), 5);
    EXPECT_EQ(wait({sock}, std::nullopt), 1);
    EXPECT_EQ(receive(sock), 0);
}

TEST_P(ReadableSocketsTest, AreNotFoundForAnUrgentByteAloneButForWhatFollowsIt) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    client.sendUrgent('u');
    ASSERT_TRUE(test::waitUntil([sock] {
        pollfd state{sock, POLLPRI, 0};
        return ::poll(&state, 1, 0) == 1;
    }));
    EXPECT_EQ(found({sock}), Sockets());
    client.send("bytes");
    client.sendUrgent('v');
    client.send("more");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
    EXPECT_LT(receive(sock), 9) << "the urgent byte parts them";
    EXPECT_EQ(wait({sock}, std::nullopt), 1);
    EXPECT_GT(receive(sock), 0);
}

TEST_P(ReadableSocketsTest, AreFoundAfterAReset) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    EXPECT_EQ(found({sock}), Sockets());
    client.reset();
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
    EXPECT_EQ(receive(sock), -1);
}

TEST_P(ReadableSocketsTest, AreFoundAgainWhenThatIsAskedAndSomethingIsLeft) {
    const int listener = server.listeners.front();
    const test::ClientSocket first(port);
    const test::ClientSocket second(port);
    ASSERT_TRUE(willBeReadable(listener));
    EXPECT_EQ(found({listener}), Sockets{listener});
    server.processListener(listener);
    sockets.askAgain(listener);
    EXPECT_EQ(found({listener}), Sockets{listener});
    server.processListener(listener);
    sockets.askAgain(listener);
    EXPECT_EQ(found({listener}), Sockets());
}

TEST_P(ReadableSocketsTest, AreFoundOnlyWhileTheyAreWatched) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    const int listener = server.listeners.front();
    client.send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock, listener}), Sockets{sock});
    EXPECT_EQ(found({listener}), Sockets());
    EXPECT_EQ(found({sock, listener}), Sockets{sock});
}

TEST_P(ReadableSocketsTest, AreForgottenWhenTheyAreClosed) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    client.send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
    test::ClientSocket next(port);
    sockets.forget(sock);
    server.closeSocket(server.clients, sock, false);
    server.processListener(server.listeners.front());
    ASSERT_EQ(accepted(), sock) << "the descriptor is used again";
    EXPECT_EQ(found({sock}), Sockets());
    next.send("x");
    ASSERT_TRUE(willBeReadable(sock));
    EXPECT_EQ(found({sock}), Sockets{sock});
}

TEST_P(ReadableSocketsTest, AreAllFoundAtOnce) {
    const Sockets all = connectMany();
    EXPECT_EQ(found(all), all);
}

TEST_P(ReadableSocketsTest, AreWaitedFor) {
    test::ClientSocket client = connect();
    EXPECT_EQ(wait({accepted()}, deadlineAfter(1)), 0);
    client.send("x");
    EXPECT_EQ(wait({accepted()}, std::nullopt), 1);
}

TEST_P(ReadableSocketsTest, LetSignalsInWhileTheyAreWaitedFor) {
    const HeldSignals signals;
    const test::ClientSocket client = connect();
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(wait({accepted()}, std::nullopt), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(signals.handled(), 1);
}

TEST_P(ReadableSocketsTest, AreNotLostWhenASignalEndsTheWait) {
    const HeldSignals signals;
    const Sockets all = connectMany();
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_TRUE(test::waitUntil([&] { return wait(all, std::nullopt) == -1; }));
    EXPECT_EQ(signals.handled(), 1);
    EXPECT_EQ(found(all), all);
}

TEST_P(ReadableSocketsTest, LeaveDescriptorsAloneThatFitInNoSet) {
    for (const int sock : {-1, FD_SETSIZE}) {
        sockets.emptied(sock);
        sockets.askAgain(sock);
        sockets.forget(sock);
    }
    EXPECT_EQ(found({}), Sockets());
}

TEST_P(ReadableSocketsTest, MustBeOpen) {
    const test::ClientSocket client = connect();
    const int closed = ::dup(accepted());
    ::close(closed);
    EXPECT_EQ(wait({closed}, std::nullopt), -1);
    EXPECT_EQ(errno, EBADF);
}

// What has arrived by the first poll must be found; what is found must be there by the second, or
// nobody has said that it was taken.
TEST_P(ReadableSocketsTest, AreThoseThatPollNamesWhateverHappensToThem) {
    constexpr std::size_t places = 8;
    constexpr int steps = 4000;
    std::mt19937 random(1);
    const auto below = [&random](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
    };
    std::vector<int> ends;
    Sockets maybeEmpty;
    const auto replace = [&](std::size_t place) {
        sockets.forget(ends[place]);
        maybeEmpty.erase(ends[place]);
        server.closeSocket(server.clients, ends[place], false);
        clients[place] = connect();
        ends[place] = accepted();
    };
    for (std::size_t i = 0; i < places; ++i) {
        clients.push_back(connect());
        ends.push_back(accepted());
    }
    for (int step = 0; step < steps; ++step) {
        const std::size_t place = below(places);
        switch (below(8)) {
            case 0:
            case 1:
            case 2:
                clients[place].trySend(std::string(1 + below(9), 'x'));
                break;
            case 3:
                clients[place].finishSending();
                break;
            case 4:
                below(4) == 0 ? clients[place].reset() : clients[place].close();
                break;
            default: {
                const std::size_t size = 1 + below(9);
                const ssize_t count = receive(ends[place], size);
                if (count == 0 || (count == -1 && errno != EAGAIN)) {
                    replace(place);
                } else if (count == static_cast<ssize_t>(size)) {
                    maybeEmpty.insert(ends[place]);
                } else {
                    maybeEmpty.erase(ends[place]);
                }
            }
        }
        const Sockets watched(ends.begin(), ends.end());
        Sockets before;
        std::copy_if(ends.begin(), ends.end(), std::inserter(before, before.end()), isReadable);
        const Sockets now = found(watched);
        for (const int sock : ends) {
            EXPECT_LE(before.count(sock), now.count(sock)) << "step " << step;
            EXPECT_TRUE(now.count(sock) == 0 || maybeEmpty.count(sock) == 1 || isReadable(sock))
                << "step " << step;
        }
        ASSERT_FALSE(HasFailure());
    }
}

TEST(ReadableSockets, AreFoundWithoutTheQueueWhenNoDescriptorIsLeftForIt) {
    std::array<int, 2> pair{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const int lowestFree = ::dup(pair[0]);
    ::close(lowestFree);
    ReadableSockets sockets;
    for (const int left : {0, 1}) {
        const rlimit few{static_cast<rlim_t>(lowestFree + left), limit.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        sockets.prepare();
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
        const int next = ::dup(pair[0]);
        EXPECT_EQ(next, lowestFree) << "none is kept";
        ::close(next);
    }
    ASSERT_EQ(::write(pair[1], "x", 1), 1);
    fd_set watched;
    FD_ZERO(&watched);
    FD_SET(pair[0], &watched);
    EXPECT_EQ(sockets.wait(pair[0] + 1, watched, std::nullopt), 1);
    EXPECT_TRUE(FD_ISSET(pair[0], &sockets.found()));
    ::close(pair[0]);
    ::close(pair[1]);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutTheQueue, ReadableSocketsTest, testing::Bool(),
                         [](const auto& mode) {
                             return std::string(mode.param ? "Queue" : "Select");
                         });

}  // namespace
}  // namespace corvane
