#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>

#include "server/server_fixture.h"

namespace corvane {
namespace {

using Lines = std::vector<std::string>;

const std::string closeLog = "corvane.server.closesocket ";

class ConnectionsTest : public ServerFixture {
  protected:
    bool closeAfterError(int policy) {
        server.options.shutdownOnDisconnect = policy;
        return server.errorCloseSocket(accepted(), true);
    }
};

/// Lets this process open no further descriptor.
class NoDescriptorsLeft {
  public:
    NoDescriptorsLeft() {
        ::getrlimit(RLIMIT_NOFILE, &previous_);
        const int next = ::dup(STDERR_FILENO);  // the lowest number that is free
        ::close(next);
        const rlimit none{static_cast<rlim_t>(next), previous_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptorsLeft() { ::setrlimit(RLIMIT_NOFILE, &previous_); }
    NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
    NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;
    NoDescriptorsLeft(NoDescriptorsLeft&&) = delete;
    NoDescriptorsLeft& operator=(NoDescriptorsLeft&&) = delete;

  private:
    rlimit previous_{};
};

TEST_F(ConnectionsTest, AreAppendedAsTheyAreAccepted) {
    const test::LogCapture log;
    const test::ClientSocket first = connect();
    const int firstSock = accepted();
    const test::ClientSocket second = connect();
    EXPECT_EQ(server.clients.descriptors(), (std::vector<int>{firstSock, accepted()}));
    EXPECT_EQ(
        log.lines(),
        (Lines{
            "INFO corvane.server.process.listener accepted connection from " + first.address(),
            "INFO corvane.server.process.listener accepted connection from " + second.address()}));
}

TEST_F(ConnectionsTest, ThatAreGoneBeforeTheyAreAcceptedLeaveNoTrace) {
    const test::LogCapture log;
    server.processListener(server.listeners.front().sock);
    EXPECT_TRUE(server.clients.empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ConnectionsTest, ThatCannotBeAcceptedAreOnlyLogged) {
    const test::ClientSocket client(port);
    const test::LogCapture log;
    {
        const NoDescriptorsLeft exhausted;
        server.processListener(server.listeners.front().sock);
    }
    EXPECT_EQ(log.lines(),
              (Lines{"WARN corvane.server.process.listener accept error " + std::to_string(EMFILE) +
                     " on socket 127.0.0.1:" + std::to_string(port)}));
    EXPECT_TRUE(server.clients.empty());
    const test::ClientSocket next(port);  // some kernels have dropped the first one
    server.processListener(server.listeners.front().sock);
    EXPECT_EQ(server.clients.size(), 1U);
}

TEST_F(ConnectionsTest, HalfCloseAGracefulOneFirst) {
    test::ClientSocket client = connect();
    const int sock = accepted();
    const test::LogCapture log;
    server.closeSocket(sock, true);
    EXPECT_EQ(log.lines(),
              (Lines{"INFO " + closeLog + "Closing socket " + client.address(),
                     "DEBUG " + closeLog + "raw close socket " + client.address(),
                     "DEBUG " + closeLog + "closeSocket " + client.address() + " end"}));
    EXPECT_TRUE(server.clients.empty());
    EXPECT_TRUE(client.isEnded());
}

TEST_F(ConnectionsTest, WarnWhenTheDescriptorIsNotOpen) {
    const test::LogCapture log;
    server.closeSocket(-1, false);
    EXPECT_EQ(log.lines(), (Lines{"INFO " + closeLog + "Closing socket ?.?.?.?:?",
                                  "DEBUG " + closeLog + "raw close socket ?.?.?.?:?",
                                  "WARN " + closeLog + "Error " + std::to_string(EBADF) +
                                      " closing socket ?.?.?.?:?",
                                  "DEBUG " + closeLog + "closeSocket ?.?.?.?:? end"}));
}

TEST_F(ConnectionsTest, AreClosedAndTakenOutOfAListInItsOrder) {
    const test::ClientSocket first = connect();
    std::vector<int> socks{accepted()};
    const test::ClientSocket second = connect();
    const test::ClientSocket third = connect();
    const int kept = accepted();
    socks.insert(socks.begin(), server.clients.descriptors()[1]);
    const test::LogCapture log;
    server.deinitSockets(socks, false);
    EXPECT_TRUE(socks.empty());
    EXPECT_EQ(server.clients.descriptors(), std::vector<int>{kept});
    const Lines lines = log.lines();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], "INFO " + closeLog + "Closing socket " + second.address());
    EXPECT_EQ(lines[3], "INFO " + closeLog + "Closing socket " + first.address());
}

TEST_F(ConnectionsTest, NeverStopTheServerByPolicy0) {
    const test::ClientSocket client = connect();
    EXPECT_TRUE(closeAfterError(0));
}

TEST_F(ConnectionsTest, StopTheServerWithTheLastOneByPolicy2) {
    const test::ClientSocket first = connect();
    const test::ClientSocket second = connect();
    EXPECT_TRUE(closeAfterError(2));
    EXPECT_FALSE(closeAfterError(2));
}

TEST_F(ConnectionsTest, StopTheServerWithAnyOneByAnyOtherPolicy) {
    for (const int policy : {1, 3, -1}) {
        const test::ClientSocket first = connect();
        const test::ClientSocket second = connect();
        EXPECT_FALSE(closeAfterError(policy)) << policy;
    }
}

TEST_F(ConnectionsTest, AreClosedBeforeTheServerIsMarkedForShutdown) {
    const test::ClientSocket client = connect();
    const test::LogCapture log;
    EXPECT_FALSE(closeAfterError(1));
    EXPECT_EQ(log.lines().back(),
              "INFO corvane.server.process.client.close Marking server for shutdown: closing "
              "client's ?.?.?.?:? connection and SHUTDOWNONDISCONNECT is set");
}

TEST_F(ConnectionsTest, AreAllClosedWithTheServer) {
    test::ClientSocket first = connect();
    test::ClientSocket second = connect();
    test::LogCapture log(log4cpp::Priority::INFO);
    server.deinitServer();
    const std::string listener = "127.0.0.1:" + std::to_string(port);
    EXPECT_EQ(log.take(), (Lines{"INFO corvane.server.deinit.client Deinit clients sockets...",
                                 "INFO " + closeLog + "Closing socket " + first.address(),
                                 "INFO " + closeLog + "Closing socket " + second.address(),
                                 "INFO corvane.server.deinit.listener Deinit listener sockets...",
                                 "INFO " + closeLog + "Closing socket " + listener}));
    EXPECT_TRUE(first.isEnded());
    EXPECT_TRUE(second.isEnded());
    EXPECT_THROW(test::ClientSocket{port}, std::runtime_error);

    server.deinitServer();  // as by a second signal
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ConnectionsTest, AreRemovedOnceFromTheirList) {
    std::vector<int> socks{3, 4, 3};
    EXPECT_TRUE(Server::removeSocket(socks, 3));
    EXPECT_EQ(socks, (std::vector<int>{4, 3}));
    EXPECT_FALSE(Server::removeSocket(socks, 5));
    Server::addSocket(socks, 6);
    EXPECT_EQ(socks, (std::vector<int>{4, 3, 6}));
}

}  // namespace
}  // namespace corvane
