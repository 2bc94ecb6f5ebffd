#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "platform/waiting.h"
#include "server/server_fixture.h"
#include "server/socket_exception.h"
#include "support/held_signals.h"
#include "support/signal_action.h"
#include "support/thrown.h"
#include "text/exception.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

const std::string processLog = "corvane.server.process ";

class ProcessTest : public ServerFixture {};

TEST_F(ProcessTest, NeedsAListener) {
    server.deinitListeners();
    const test::LogCapture log;
    try {
        server.process();
        FAIL();
    } catch (const Exception& e) {
        EXPECT_EQ(e.message, "There are no listening sockets...");
    }
    EXPECT_EQ(log.lines(), Lines{"DEBUG " + processLog + "Process loop start"});
}

TEST_F(ProcessTest, EndsOnShutdownAndClosesAllClients) {
    test::ClientSocket first = connect();
    test::ClientSocket second = connect();
    second.send("shutdown\0"s);
    const test::LogCapture log;
    server.process();
    EXPECT_TRUE(first.isEnded());
    EXPECT_TRUE(second.isEnded());
    EXPECT_EQ(server.listeners.size(), 1U);
    const Lines& lines = log.lines();
    const auto end =
        std::find(lines.begin(), lines.end(), "DEBUG " + processLog + "Process loop end");
    ASSERT_EQ(std::distance(end, lines.end()), 8);
    EXPECT_EQ(end[1], "INFO corvane.server.deinit.client Deinit clients sockets...");
}

TEST_F(ProcessTest, WarnsOfAnEventThatIsNobodys) {
    test::ClientSocket lost = connect();
    const auto connection = server.clients.remove(accepted());
    lost.send("x");
    test::ClientSocket client = connect();
    client.send("shutdown\0"s);
    const test::LogCapture log;
    server.process();
    const Lines& lines = log.lines();
    EXPECT_EQ(
        std::count(lines.begin(), lines.end(), "WARN " + processLog + "Event from unknown source!"),
        1);
}

TEST_F(ProcessTest, WarnsOfNoEventThatATerminationSignalHasMadeNobodys) {
    static Server* running = nullptr;
    running = &server;
    test::ClientSocket client = connect();
    client.send("x");
    const test::SignalAction stop(SIGTERM, [](int) {
        requestStop();
        running->deinitServer();
    });
    const HeldSignals signals;
    ASSERT_EQ(::raise(SIGTERM), 0);
    const test::LogCapture log(log4cpp::Priority::WARN);
    EXPECT_EQ(test::thrownBy([this] { server.process(); }), "There are no listening sockets...");
    withdrawStop();
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProcessTest, ServesTheClientThatWasAcceptedFirstFirst) {
    test::ClientSocket first = connect();
    test::ClientSocket second = connect();
    second.send("second\0"s);
    first.send("first\0shutdown\0"s);
    server.process();
    EXPECT_EQ(server.commands, Lines{"first"});
}

TEST_F(ProcessTest, ServesAllRequestsThatCameAtOnceBeforeALaterClient) {
    test::ClientSocket first = connect();
    test::ClientSocket second = connect();
    second.send("shutdown\0"s);
    first.send("one\0two\0\nthree\0four"s);
    first.finishSending();
    server.process();
    EXPECT_EQ(server.commands, (Lines{"one", "two", "three"}));
    EXPECT_EQ(first.reply(), "one!");
}

TEST_F(ProcessTest, ComesBackToAClientWhoseBytesFilledTheBuffer) {
    constexpr std::size_t received = std::size_t{32} * 1024;
    test::ClientSocket client = connect();
    client.send("a\n"s + std::string(received - 3, 'x') + '\0');  // nothing is left in the socket
    client.send("b\0"s);
    client.send("c\n"s + std::string(received - 3, 'x') + '\0');
    client.send("shutdown\0"s);
    server.process();
    EXPECT_EQ(server.commands, (Lines{"a", "b", "c"}));
}

TEST_F(ProcessTest, DoesNotWaitForAClientThatHasSentNothing) {
    test::ClientSocket silent = connect();
    EXPECT_TRUE(server.processClient(accepted()));
    EXPECT_EQ(server.clients.size(), 1U);
    EXPECT_FALSE(silent.hasSomething());
}

TEST_F(ProcessTest, AcceptsOnlyWhenNoClientIsReady) {
    test::ClientSocket busy = connect();
    busy.send("one\0two\0"s);
    test::ClientSocket late(port);
    late.send("shutdown\0"s);
    const test::LogCapture log;
    server.process();
    EXPECT_EQ(server.commands, (Lines{"one", "two"}));
    const Lines& lines = log.lines();
    const auto line = [&lines](const std::string& text) {
        return std::find(lines.begin(), lines.end(), text);
    };
    const auto accepting =
        line("INFO corvane.server.process.listener accepted connection from " + late.address());
    EXPECT_NE(accepting, lines.end());
    EXPECT_LT(line("DEBUG corvane.server.process.client request data 'two'"), accepting);
}

TEST_F(ProcessTest, EndsWhenTheInactivityTimeIsOver) {
    server.options.inactivity = 1;
    const test::LogCapture log;
    server.process();
    EXPECT_EQ(log.lines(),
              (Lines{"DEBUG " + processLog + "Process loop start",
                     "NOTICE " + processLog + "Inactivity time (1) has elapsed. Quitting...",
                     "DEBUG " + processLog + "Process loop end"}));
}

TEST_F(ProcessTest, EndsWhenAClientsDisconnectionStopsIt) {
    server.options.shutdownOnDisconnect = 1;
    test::ClientSocket staying = connect();
    test::ClientSocket leaving = connect();
    leaving.close();
    server.process();
    EXPECT_TRUE(staying.isEnded());
}

TEST_F(ProcessTest, FailsWhenItCannotWait) {
    const int closed = ::dup(STDERR_FILENO);
    ::close(closed);
    server.addClient(FileDesc(closed), {});
    try {
        server.process();
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.message, "select() error (" + std::to_string(EBADF) + ")");
    }
}

}  // namespace
}  // namespace corvane
