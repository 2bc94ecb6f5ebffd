#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "server/server_fixture.h"
#include "server/socket_exception.h"
#include "support/resource_limit.h"
#include "support/thrown.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

const std::string initLog = "corvane.server.init ";

class ListenerTest : public ServerFixture {};

std::string failureOf(Server& server, const std::string& address, int port) {
    try {
        server.initListener(address, port);
    } catch (const BindException& e) {
        return e.message;
    }
    return "none";
}

TEST_F(ListenerTest, LogsEachStep) {
    const test::LogCapture log;
    Server another;
    another.initListener("127.0.0.1", 0);
    EXPECT_EQ(log.lines(),
              (Lines{"DEBUG " + initLog + "Creating socket...",
                     "DEBUG " + initLog + "Binding socket to 127.0.0.1:0 (127.0.0.1)...",
                     "DEBUG " + initLog + "Listening with backlog 128...",
                     "NOTICE " + initLog + "Listening on " + another.listeners.front().address}));
}

TEST_F(ListenerTest, UsesTheServersAddressAndPort) {
    Server another;
    another.options.address = "127.0.0.1";
    another.options.port = port;
    EXPECT_THROW(another.initServer(), BindException);
}

TEST_F(ListenerTest, MayBeOneOfSeveral) {
    server.initListener("127.0.0.1", 0);
    ASSERT_EQ(server.listeners.size(), 2U);
    const std::string where = server.listeners[1].address;
    const test::ClientSocket client(std::stoi(where.substr(where.find(':') + 1)));
    while (server.clients.empty()) {
        server.processListener(server.listeners[1].sock);
    }
    EXPECT_EQ(formatAddress(accepted()), client.address());
}

TEST_F(ListenerTest, FailsForAPortThatIsTaken) {
    const std::string where = "127.0.0.1:" + std::to_string(port);
    EXPECT_EQ(failureOf(server, "127.0.0.1", port),
              "Bind error to " + where + " (" + std::to_string(EADDRINUSE) + ")");
    EXPECT_EQ(server.listeners.size(), 1U);
}

TEST_F(ListenerTest, OpensAgainWhereConnectionsHaveJustBeenClosed) {
    test::ClientSocket client = connect();
    server.deinitServer();  // closed first here, the connection is remembered for a minute
    EXPECT_TRUE(client.isEnded());
    client.close();
    EXPECT_EQ(failureOf(server, "127.0.0.1", port), "none");
}

TEST_F(ListenerTest, WarnsOfNoAddressOfTheLoopbackNetwork) {
    const test::LogCapture log(log4cpp::Priority::WARN);
    Server another;
    try {
        another.initListener("127.1.2.3", 0);
    } catch (const BindException&) {
        GTEST_SKIP() << "the system knows 127.0.0.1 only";
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ListenerTest, FailsForAForeignAddress) {
    EXPECT_EQ(failureOf(server, "192.0.2.1", 0),
              "Bind error to 192.0.2.1:0 (" + std::to_string(EADDRNOTAVAIL) + ")");
}

TEST_F(ListenerTest, FailsForAnAddressThatNobodyKnows) {
    EXPECT_EQ(failureOf(server, "no such host", 0),
              "Bind error to 255.255.255.255:0 (" + std::to_string(EADDRNOTAVAIL) + ")");
}

TEST_F(ListenerTest, FailsForANumberThatIsNoPort) {
    EXPECT_EQ(failureOf(server, "127.0.0.1", 65536),
              "Bind error to 127.0.0.1:65536 (" + std::to_string(EINVAL) + ")");
    EXPECT_EQ(failureOf(server, "127.0.0.1", -1),
              "Bind error to 127.0.0.1:-1 (" + std::to_string(EINVAL) + ")");
}

TEST_F(ListenerTest, MayHaveTheLargestPort) {
    Server another;
    try {
        another.initListener("127.0.0.1", 65535);
    } catch (const BindException& e) {
        ASSERT_EQ(e.code, EADDRINUSE);
        GTEST_SKIP() << "another program has the port";
    }
    EXPECT_EQ(another.listeners.front().address, "127.0.0.1:65535");
}

TEST_F(ListenerTest, ResolvesAName) {
    Server another;
    another.initListener("localhost", 0);
    EXPECT_EQ(another.listeners.front().address.rfind("127.", 0), 0U);
}

TEST_F(ListenerTest, WarnsWhenOthersCanReachIt) {
    const test::LogCapture log(log4cpp::Priority::WARN);
    Server another;
    another.initListener("", 0);
    const std::string where = another.listeners.front().address;
    EXPECT_EQ(where.rfind("0.0.0.0:", 0), 0U);
    EXPECT_EQ(log.lines().back(), "WARN " + initLog + where +
                                      " is not a loopback address: everyone who can reach it can "
                                      "use this server");
}

TEST_F(ListenerTest, AndItsConnectionsAreClosedOnExec) {
    const test::ClientSocket client = connect();
    EXPECT_EQ(::fcntl(server.listeners.front().sock, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(accepted(), F_GETFD), FD_CLOEXEC);
}

TEST_F(ListenerTest, NeverWaitsAndNeitherDoItsConnections) {
    const test::ClientSocket client = connect();
    EXPECT_NE(::fcntl(server.listeners.front().sock, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(accepted(), F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(ListenerTest, GivesItsConnectionsNoDelay) {
    const test::ClientSocket client = connect();
    int value = 0;
    socklen_t length = sizeof value;
    ::getsockopt(accepted(), IPPROTO_TCP, TCP_NODELAY, &value, &length);
    EXPECT_NE(value, 0);
}

TEST(SelectSet, IsFilledAndTheLargestDescriptorReturned) {
    fd_set set;
    FD_ZERO(&set);
    EXPECT_EQ(Server::addSocketsToFdSet(set, {}), 0);
    EXPECT_EQ(Server::addSocketsToFdSet(set, {5, 9, 7}), 9);
    EXPECT_TRUE(FD_ISSET(5, &set));
    EXPECT_TRUE(FD_ISSET(7, &set));
    EXPECT_TRUE(FD_ISSET(9, &set));
    EXPECT_FALSE(FD_ISSET(6, &set));
}

TEST(SelectSet, GivesTheFirstReadySocketInTheOrderOfTheList) {
    fd_set set;
    FD_ZERO(&set);
    EXPECT_EQ(Server::isSocketsEvent(set, {9, 5}), -1);
    FD_SET(5, &set);
    FD_SET(9, &set);
    EXPECT_EQ(Server::isSocketsEvent(set, {7, 9, 5}), 9);
    EXPECT_EQ(Server::isSocketsEvent(set, {}), -1);
}

TEST_F(ListenerTest, HoldsManyConnectionsUntilTheyAreAccepted) {
    constexpr std::size_t many = 100;
    std::vector<test::ClientSocket> waiting;
    while (waiting.size() < many) {
        waiting.emplace_back(port);
    }
    while (server.clients.size() < many) {
        server.processListener(server.listeners.front().sock);
    }
    for (test::ClientSocket& client : waiting) {
        client.send("hello\0"s);
    }
    for (const int sock : server.clients.descriptors()) {
        EXPECT_TRUE(server.processClient(sock));
    }
    EXPECT_EQ(waiting.back().reply(), "hello!");
}

TEST_F(ListenerTest, FailsWithoutADescriptor) {
    // As DescriptorLimit does for another class.
    static_cast<void>(test::thrownBy<SocketException>([] { throw SocketException("", 0); }));
    const test::DescriptorLimit none(test::nextDescriptor());
    EXPECT_EQ(test::thrownBy<SocketException>([this] { server.initListener("127.0.0.1", 0); }),
              test::withCode("Create socket error", EMFILE));
}

TEST_F(ListenerTest, FailsWithADescriptorThatCannotBeWaitedFor) {
    rlimit limits{};
    ::getrlimit(RLIMIT_NOFILE, &limits);
    if (limits.rlim_max < FD_SETSIZE + 64) {
        GTEST_SKIP() << "the number of descriptors cannot be raised far enough";
    }
    const test::ResourceLimit many(RLIMIT_NOFILE, FD_SETSIZE + 64);
    std::vector<FileDesc> all;
    while (test::nextDescriptor() < FD_SETSIZE) {
        all.emplace_back(::dup(STDERR_FILENO));
    }
    EXPECT_EQ(test::thrownBy<SocketException>([this] { server.initListener("127.0.0.1", 0); }),
              test::withCode("Create socket error", EMFILE));
    EXPECT_EQ(test::nextDescriptor(), FD_SETSIZE) << "none is kept";
}

}  // namespace
}  // namespace corvane
