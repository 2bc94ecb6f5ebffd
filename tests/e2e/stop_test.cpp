// The ways to stop the server, and the last lines of its log.
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <thread>

#include "e2e/server_test.h"
#include "support/wait_until.h"

namespace corvane::test {
namespace {

using Lines = std::vector<std::string>;
using namespace std::string_literals;

const std::string closing = "corvane.server.closesocket ";

/// The lines of one socket that is closed.
Lines closed(const std::string& address) {
    return {"INFO " + closing + "Closing socket " + address,
            "DEBUG " + closing + "raw close socket " + address,
            "DEBUG " + closing + "closeSocket " + address + " end"};
}

Lines operator+(Lines a, const Lines& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const Lines stopped{"NOTICE corvane stop service", "DEBUG corvane pid file release",
                    "NOTICE corvane application terminated"};

/// Sends requests faster than they are answered until the server is gone.
void floodUntilEnd(ClientSocket& client) {
    std::string requests;
    for (int i = 0; i < 5000; ++i) {
        requests += "currentDir\0"s;
    }
    try {
        while (client.sendWithoutWaiting(requests) != 0 || client.hasSomething(1000)) {
            while (client.hasSomething()) {
                client.reply();
            }
        }
    } catch (const std::runtime_error&) {
        return;
    }
}

class StopTest : public ServerTest {
  protected:
    std::string listener() const { return "127.0.0.1:" + std::to_string(server().port()); }

    /// Waits for the end and compares the last lines of the log.
    void expectEnd(const Lines& lines) {
        EXPECT_EQ(server().wait(), 0);
        EXPECT_EQ(lastOf(server().logLines(), lines.size()), lines);
    }

    void expectNormalEnd(const Lines& clientLines) {
        expectEnd(clientLines +
                  Lines{"INFO corvane.server.deinit.listener Deinit listener sockets..."} +
                  closed(listener()) + stopped);
    }

    Lines closedClient(const ClientSocket& client) const {
        return Lines{"DEBUG corvane.server.process Process loop end",
                     "INFO corvane.server.deinit.client Deinit clients sockets..."} +
               closed(client.address());
    }
};

TEST_F(StopTest, ByTheShutdownRequest) {
    ClientSocket client = start().connect();
    client.send("shutdown\0"s);
    expectNormalEnd(Lines{"INFO corvane.server.process.client SHUTDOWN command was received"} +
                    closedClient(client));
    EXPECT_TRUE(client.isEnded());
}

TEST_F(StopTest, AfterTheInactivityTime) {
    start("INACTIVITY=1\n");
    expectNormalEnd({"NOTICE corvane.server.process Inactivity time (1) has elapsed. Quitting...",
                     "DEBUG corvane.server.process Process loop end"});
}

TEST_F(StopTest, AfterTheInactivityTimeClosesTheClients) {
    ClientSocket client = start("INACTIVITY=1\n").connect();
    expectNormalEnd(
        Lines{"NOTICE corvane.server.process Inactivity time (1) has elapsed. Quitting..."} +
        closedClient(client));
    EXPECT_TRUE(client.isEnded());
}

TEST_F(StopTest, NotAsLongAsRequestsOrConnectionsComeWithinTheInactivityTime) {
    start("INACTIVITY=2\n");
    const auto longerThanThat = [] {
        return std::chrono::steady_clock::now() + std::chrono::milliseconds(2500);
    };
    ClientSocket asking = server().connect();
    const auto requestsEnd = longerThanThat();
    EXPECT_TRUE(waitUntil([&] {
        asking.request("hello");
        return std::chrono::steady_clock::now() > requestsEnd;
    }));
    const auto connectionsEnd = longerThanThat();
    EXPECT_TRUE(waitUntil([&] {
        server().connect();
        return std::chrono::steady_clock::now() > connectionsEnd;
    }));
    EXPECT_EQ(asking.request("hello"), failure("hello"));
}

TEST_F(StopTest, NotBeforeTheLongestInactivityTime) {
    ClientSocket client = start("INACTIVITY=2147483647\n").connect();
    EXPECT_EQ(client.request("hello"), failure("hello"));
    EXPECT_FALSE(client.hasSomething(50));
    EXPECT_EQ(client.request("hello"), failure("hello"));
}

TEST_F(StopTest, NotWhenAClientLeavesByPolicy0) {
    start("SHUTDOWNONDISCONNECT=0\n");
    server().connect().close();
    EXPECT_TRUE(server().waitForLog("has closed connection"));
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
}

TEST_F(StopTest, WhenAnyClientLeavesByPolicy1) {
    start("SHUTDOWNONDISCONNECT=1\n");
    ClientSocket staying = server().connect();
    staying.request("currentDir");
    ClientSocket leaving = server().connect();
    leaving.request("currentDir");
    leaving.close();
    const std::string address = leaving.address();
    expectNormalEnd(
        Lines{"INFO corvane.server.process.client Client " + address + " has closed connection"} +
        closed(address) +
        Lines{"INFO corvane.server.process.client.close Marking server for shutdown: closing "
              "client's ?.?.?.?:? connection and SHUTDOWNONDISCONNECT is set"} +
        closedClient(staying));
    EXPECT_TRUE(staying.isEnded());
}

TEST_F(StopTest, WhenTheLastClientLeavesByPolicy2) {
    start("SHUTDOWNONDISCONNECT=2\n");
    ClientSocket first = server().connect();
    first.request("currentDir");
    ClientSocket second = server().connect();
    second.request("currentDir");
    first.close();
    EXPECT_TRUE(server().waitForLog("has closed connection"));
    EXPECT_EQ(second.request("currentDir"), currentDirReply(server().directory().path()));
    second.close();
    EXPECT_EQ(server().wait(), 0);
    EXPECT_EQ(lastOf(server().logLines(), 3), stopped);
}

class StopBySignalTest : public StopTest, public testing::WithParamInterface<int> {
  protected:
    Lines signalLines() const {
        return {"DEBUG corvane.signal.term signal " + std::to_string(GetParam()) + " was received"};
    }

    Lines deinitLines(const ClientSocket& client) const {
        return signalLines() +
               Lines{"INFO corvane.server.deinit.client Deinit clients sockets..."} +
               closed(client.address()) +
               Lines{"INFO corvane.server.deinit.listener Deinit listener sockets..."} +
               closed(listener());
    }

    const Lines noListener{"ERROR corvane Server exception: There are no listening sockets..."};
};

TEST_P(StopBySignalTest, WhileItWaits) {
    ClientSocket client = start().connect();
    client.request("currentDir");
    server().signal(GetParam());
    expectEnd(deinitLines(client) + noListener + stopped);
    EXPECT_TRUE(client.isEnded());
}

TEST_P(StopBySignalTest, WhileARequestIsIncomplete) {
    ClientSocket client = start("DEBUGREQUESTREAD=true\n").connect();
    client.send("write");
    EXPECT_TRUE(server().waitForLog("request byte 101 (0x0x65)"));
    server().signal(GetParam());
    const std::string unknown = "?.?.?.?:?";
    expectEnd(deinitLines(client) +
              Lines{"ERROR corvane.server.process.client Client " + unknown +
                        " socket exception: recv() error (9)",
                    "INFO " + closing + "Closing socket " + unknown,
                    "DEBUG " + closing + "raw close socket " + unknown,
                    "WARN " + closing + "Error 9 closing socket " + unknown,
                    "DEBUG " + closing + "closeSocket " + unknown + " end"} +
              noListener + stopped);
}

TEST_P(StopBySignalTest, WhileAClientDoesNotReadItsReply) {
    constexpr std::size_t size = std::size_t{64} * 1024 * 1024;
    constexpr int smallBuffer = 4096;
    start("log4cpp.priority=NOTICE\n");
    const std::string file = server().directory().file("large", std::string(size, 'x'));
    ClientSocket client = server().connect(smallBuffer);
    client.send("readText\n" + file + '\0');
    EXPECT_TRUE(client.hasSomething(60'000));
    server().signal(GetParam());
    EXPECT_EQ(server().wait(), 0);
    EXPECT_EQ(server().logLines().back(), "NOTICE corvane application terminated");
}

TEST_P(StopBySignalTest, UnderSteadyLoad) {
    constexpr int enoughTime = 10;  // clock ticks
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    std::thread load([&] { floodUntilEnd(client); });
    EXPECT_TRUE(waitUntil([&] { return server().processorTime() > enoughTime; }));
    server().signal(GetParam());
    EXPECT_EQ(server().wait(), 0);
    load.join();
    EXPECT_EQ(server().logLines().back(), "NOTICE corvane application terminated");
}

TEST_P(StopBySignalTest, WhileARequestGrowsWithoutEnd) {
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    std::thread load([&] {
        const std::string block(1'000'000, 'x');
        while (client.trySend(block)) {
        }
    });
    const long before = server().residentMemory();
    EXPECT_TRUE(waitUntil([&] { return server().residentMemory() > before + 20'000; }));
    server().signal(GetParam());
    EXPECT_EQ(server().wait(), 0);
    load.join();
}

INSTANTIATE_TEST_SUITE_P(Termination, StopBySignalTest, testing::Values(SIGTERM, SIGINT),
                         [](const testing::TestParamInfo<int>& signal) {
                             return std::string(signal.param == SIGTERM ? "Terminate"
                                                                        : "Interrupt");
                         });

}  // namespace
}  // namespace corvane::test
