#include <unistd.h>

#include <cerrno>
#include <memory>
#include <new>
#include <stdexcept>

#include "server/server_fixture.h"
#include "text/exception.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

const std::string clientLog = "corvane.server.process.client ";

class ProcessClientTest : public ServerFixture {
  protected:
    /// Lets the server handle `bytes` of a new client; returns what processClient() returns.
    bool handle(const std::string& bytes) {
        client = std::make_unique<test::ClientSocket>(connect());
        client->send(bytes);
        return server.processClient(accepted());
    }

    std::unique_ptr<test::ClientSocket> client;
};

TEST_F(ProcessClientTest, HandsACommandAndItsParametersOver) {
    const test::LogCapture log;
    EXPECT_TRUE(handle("copy\r\nfrom\r\n\r\nto\0"s));
    EXPECT_EQ(server.commands, Lines{"copy"});
    EXPECT_EQ(server.parameters, (Lines{"from", "", "to"}));
    EXPECT_EQ(client->reply(), "copy!");
    EXPECT_TRUE(log.contains("DEBUG " + clientLog + "request data 'copy\r\nfrom\r\n\r\nto'"));
}

TEST_F(ProcessClientTest, AnswersNothingToALineEnd) {
    EXPECT_TRUE(handle("\nuserDir\0"s));
    EXPECT_TRUE(server.commands.empty());
    EXPECT_TRUE(server.processClient(accepted()));
    EXPECT_EQ(client->reply(), "userDir!");
}

TEST_F(ProcessClientTest, WarnsOfAnEmptyRequestAndKeepsTheConnection) {
    const test::LogCapture log;
    EXPECT_TRUE(handle("\0userDir\0"s));
    EXPECT_EQ(log.lines().back(), "WARN " + clientLog + "Empty request from " + client->address());
    EXPECT_TRUE(server.processClient(accepted()));
    EXPECT_EQ(client->reply(), "userDir!");
}

TEST_F(ProcessClientTest, TakesACommandNameThatIsTooLongForAnEmptyRequest) {
    const test::LogCapture log;
    EXPECT_TRUE(handle(std::string(1024, 'x') + '\0'));
    EXPECT_EQ(log.lines().back(), "WARN " + clientLog + "Empty request from " + client->address());
    EXPECT_TRUE(server.commands.empty());
}

TEST_F(ProcessClientTest, StopsOnShutdownWithoutAReply) {
    const test::LogCapture log;
    EXPECT_FALSE(handle("shutdown\nnow\0"s));
    EXPECT_EQ(log.lines().back(), "INFO " + clientLog + "SHUTDOWN command was received");
    EXPECT_FALSE(client->hasSomething());
    EXPECT_TRUE(server.commands.empty());
}

TEST_F(ProcessClientTest, KnowsShutdownInThisSpellingOnly) {
    EXPECT_TRUE(handle("Shutdown\0"s));
    EXPECT_EQ(client->reply(), "Shutdown!");
}

TEST_F(ProcessClientTest, HandsShutdownOverWhenItIsNotAmongTheAllowedCommands) {
    server.options.allowedCommands = {{"userDir"}};
    EXPECT_TRUE(handle("shutdown\0"s));
    EXPECT_EQ(server.commands, Lines{"shutdown"});
    server.options.allowedCommands = {{"userDir", "shutdown"}};
    EXPECT_FALSE(handle("shutdown\0"s));
}

TEST_F(ProcessClientTest, ClosesAClientThatHasClosedItsConnection) {
    client = std::make_unique<test::ClientSocket>(connect());
    client->finishSending();
    const test::LogCapture log;
    EXPECT_TRUE(server.processClient(accepted()));
    EXPECT_EQ(log.lines().front(),
              "INFO " + clientLog + "Client " + client->address() + " has closed connection");
    EXPECT_TRUE(server.clients.empty());
}

TEST_F(ProcessClientTest, ClosesAClientWhoseSocketFails) {
    client = std::make_unique<test::ClientSocket>(connect());
    const std::string where = client->address();
    ::close(accepted());
    const test::LogCapture log;
    EXPECT_TRUE(server.processClient(accepted()));
    EXPECT_EQ(log.lines().front(), "ERROR " + clientLog + "Client " + where +
                                       " socket exception: recv() error (" + std::to_string(EBADF) +
                                       ")");
    EXPECT_TRUE(server.clients.empty());
}

TEST_F(ProcessClientTest, ClosesAClientWhoseCommandFailsWithoutAReply) {
    server.onCommand = [](int) { throw FileNotFoundException("x"); };
    const test::LogCapture log;
    EXPECT_TRUE(handle("userDir\0"s));
    EXPECT_TRUE(log.contains("INFO " + clientLog + "Closing client " + client->address() +
                             " because it has caused exception: File not found: x"));
    EXPECT_TRUE(client->isEnded());
}

TEST_F(ProcessClientTest, ClosesAClientWhoseRequestNeedsMoreMemoryThanThereIs) {
    server.onCommand = [](int) { throw std::bad_alloc(); };
    const test::LogCapture log;
    EXPECT_TRUE(handle("userDir\0"s));
    EXPECT_TRUE(log.contains("INFO " + clientLog + "Closing client " + client->address() +
                             " because it has caused exception: not enough memory (" +
                             std::to_string(ENOMEM) + ")"));
    EXPECT_TRUE(client->isEnded());
}

TEST_F(ProcessClientTest, LetsOtherExceptionsPass) {
    server.onCommand = [](int) { throw std::runtime_error("not the program's"); };
    EXPECT_THROW(handle("userDir\0"s), std::runtime_error);
}

TEST_F(ProcessClientTest, StopsAfterAnErrorWhenThePolicySaysSo) {
    server.options.shutdownOnDisconnect = 1;
    server.onCommand = [](int) { throw Exception("x"); };
    EXPECT_FALSE(handle("userDir\0"s));
}

TEST_F(ProcessClientTest, RefusesABrowserWithoutRunningWhatItSends) {
    server.options.shutdownOnDisconnect = 1;
    const test::LogCapture log(log4cpp::Priority::WARN);
    EXPECT_TRUE(handle("POST / HTTP/1.1\r\nHost: x\r\n\r\n\1shutdown\0"s));
    EXPECT_EQ(client->untilEnd(), "<fatalError cmd='POST / HTTP/1.1'/>\0"s);
    EXPECT_TRUE(server.clients.empty());
    EXPECT_TRUE(server.commands.empty());
    EXPECT_EQ(log.lines(), Lines{"WARN " + clientLog + "Client " + client->address() +
                                 ": refused, not an application's request: 'POST / HTTP/1.1'"});
}

TEST_F(ProcessClientTest, RefusesABrowserThatSendsMuchWithoutResettingItsConnection) {
    const std::string body(200'000, 'x');  // more than the server receives at once
    EXPECT_TRUE(handle("POST / HTTP/1.1\r\n\r\n" + body));
    EXPECT_FALSE(client->wasReset());
    EXPECT_EQ(client->untilEnd(), "<fatalError cmd='POST / HTTP/1.1'/>\0"s);
}

TEST_F(ProcessClientTest, RefusesAMethodAndAPathHoweverTheLineEnds) {
    server.options.shutdownOnDisconnect = 1;
    for (const std::string& request : {"GET /\0"s, "PUT /x\1"s, "GET /x y\n"s}) {
        EXPECT_TRUE(handle(request));
        EXPECT_EQ(client->untilEnd().substr(0, 17), "<fatalError cmd='");
    }
    EXPECT_TRUE(server.commands.empty());
}

TEST_F(ProcessClientTest, IsNotStoppedByAPageThatEndsInsideItsFirstLine) {
    server.options.shutdownOnDisconnect = 1;
    server.options.maxRequest = 8;
    for (const std::string& request : {"GET /"s, "GET /longer than the limit"s}) {
        client = std::make_unique<test::ClientSocket>(connect());
        client->send(request);
        client->finishSending();
        EXPECT_TRUE(server.processClient(accepted())) << request;
    }
    client = std::make_unique<test::ClientSocket>(connect());
    client->send("userDi");
    client->finishSending();
    EXPECT_FALSE(server.processClient(accepted())) << "an application";
}

TEST_F(ProcessClientTest, RefusesStun) {
    server.options.shutdownOnDisconnect = 1;
    EXPECT_TRUE(handle("\0\1\0\0\x21\x12\xA4\x42"s + std::string(12, 'x')));
    EXPECT_EQ(client->untilEnd(), "<fatalError cmd='STUN'/>\0"s);
    EXPECT_TRUE(server.clients.empty());
}

TEST_F(ProcessClientTest, WarnsOfBrowsersOnceAMinute) {
    const test::LogCapture log(log4cpp::Priority::WARN);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(handle("GET / HTTP/1.1\r\n"));
    }
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(ProcessClientTest, SurvivesABrowserThatIsGoneAlready) {
    client = std::make_unique<test::ClientSocket>(connect());
    client->send("GET / HTTP/1.1\r\n");
    client->close();
    EXPECT_TRUE(server.processClient(accepted()));
    EXPECT_TRUE(server.clients.empty());
}

TEST_F(ProcessClientTest, OfTheBaseClassOnlyLogs) {
    Server base;
    base.initListener("127.0.0.1", 0);
    const std::string where = base.listeners.front().address;
    test::ClientSocket sender(std::stoi(where.substr(where.find(':') + 1)));
    while (base.clients.empty()) {
        base.processListener(base.listeners.front().sock);
    }
    sender.send("hello\0"s);
    const test::LogCapture log;
    EXPECT_TRUE(base.processClient(base.clients.descriptors().front()));
    EXPECT_EQ(log.lines().back(),
              "INFO corvane.server.process.client.cmd Client " + sender.address() + ": hello");
    EXPECT_FALSE(sender.hasSomething());
}

}  // namespace
}  // namespace corvane
