// The keys that close the server further: time and size of a request, the list of commands; and the
// memory that a request may need.
#include <poll.h>
#include <sys/resource.h>

#include <cerrno>
#include <fstream>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

using namespace std::string_literals;

const std::string clientLog = "corvane.server.process.client ";

class LimitsTest : public ServerTest {
  protected:
    void expectService() {
        EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
    }
    bool hasClosed(const std::string& address, const std::string& reason) const {
        return server().waitForLog("INFO " + clientLog + "Closing client " + address +
                                   " because it has caused exception: " + reason + "\n");
    }
};

TEST_F(LimitsTest, CloseAClientThatDoesNotCompleteItsRequestInTime) {
    ClientSocket client = start("REQUESTTIMEOUT=1\n").connect();
    client.send("currentD");
    EXPECT_TRUE(client.isEnded());
    EXPECT_TRUE(hasClosed(client.address(), "request is not complete after 1 s"));
    expectService();
}

TEST_F(LimitsTest, CloseAClientThatSendsOneRequestWithoutAPauseForTooLong) {
    ClientSocket client = start("REQUESTTIMEOUT=1\nlog4cpp.priority=INFO\n").connect();
    client.send("write\n/dev/null\n");
    const std::string block(65'536, 'x');
    while (client.trySend(block)) {
    }
    EXPECT_TRUE(hasClosed(client.address(), "request is not complete after 1 s"));
    expectService();
}

TEST_F(LimitsTest, LetAClientBeIdleBetweenRequestsForAnyTime) {
    start("REQUESTTIMEOUT=1\n");
    ClientSocket idle = server().connect();
    idle.request("currentDir");
    ClientSocket slow = server().connect();
    slow.send("half");
    EXPECT_TRUE(slow.isEnded());  // the time is over now
    EXPECT_EQ(idle.request("currentDir"), currentDirReply(server().directory().path()));
}

TEST_F(LimitsTest, StartAnewWithTheNextRequestOfAClient) {
    start("REQUESTTIMEOUT=1\n");
    ClientSocket client = server().connect();
    const std::string inSeveralPieces(100'000, 'x');
    EXPECT_EQ(client.request("write\n/dev/null\n" + inSeveralPieces), success("write"));
    ClientSocket slow = server().connect();
    slow.send("half");
    EXPECT_TRUE(slow.isEnded());  // the time is over now
    EXPECT_EQ(client.request("currentDir"), currentDirReply(server().directory().path()));
}

TEST_F(LimitsTest, CloseAClientThatDoesNotReadItsReplyInTime) {
    constexpr int smallBuffer = 4096;
    constexpr std::size_t size = 16'000'000;
    start("REQUESTTIMEOUT=1\n");
    std::string text;
    text.assign(size, 'x');
    const std::string file = server().directory().file("large", text);
    ClientSocket client = server().connect(smallBuffer);
    client.send("readText\n" + file + '\0');
    EXPECT_TRUE(server().waitForLog("ERROR " + clientLog + "Client " + client.address() +
                                    " socket exception: send() error ("));
    expectService();
    const std::string received = client.untilEnd();
    EXPECT_LT(received.size(), size);
    EXPECT_EQ(received.find('\0'), std::string::npos);  // half a reply is all that it got
}

TEST_F(LimitsTest, CloseAClientThatReadsItsReplyTooSlowly) {
    constexpr int smallBuffer = 65'536;
    constexpr std::size_t size = 32'000'000;
    constexpr int pauseInMilliseconds = 20;
    start("REQUESTTIMEOUT=1\nlog4cpp.priority=INFO\n");
    const std::string file = server().directory().file("large", std::string(size, 'x'));
    ClientSocket client = server().connect(smallBuffer);
    client.send("readText\n" + file + '\0');
    std::size_t received = 0;
    while (const std::size_t count = client.take(smallBuffer)) {
        received += count;
        ::poll(nullptr, 0, pauseInMilliseconds);  // such a client always makes some room
    }
    EXPECT_LT(received, size);
    expectService();
}

TEST_F(LimitsTest, CloseAClientWhoseRequestIsTooLong) {
    start("MAXREQUEST=100\n");
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("log\n\n\n" + std::string(94, 'x')), success("log"));
    client.send("log\n\n\n" + std::string(95, 'x'));
    EXPECT_TRUE(client.isEnded());
    EXPECT_TRUE(hasClosed(client.address(), "request is longer than 100 bytes"));
    expectService();
}

TEST_F(LimitsTest, RefuseCommandsThatAreNotInTheList) {
    start("COMMANDS=currentDir, log\n");
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("log\n\n\nhello"), success("log"));
    EXPECT_EQ(client.request("userDir"), failure("userDir"));
    EXPECT_EQ(client.request("shutdown"), failure("shutdown"));
    EXPECT_TRUE(server().hasLogged("WARN corvane.server.process.client.cmd Client " +
                                   client.address() + ": command 'shutdown' not found"));
    expectService();
}

TEST_F(LimitsTest, RefuseEveryCommandWhenTheListHasNoName) {
    start("COMMANDS= , \n");
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("userDir"), failure("userDir"));
    EXPECT_EQ(client.request("shutdown"), failure("shutdown"));
    EXPECT_TRUE(server().isRunning());
}

TEST_F(LimitsTest, AreReadOnceAtTheStart) {
    start("COMMANDS=currentDir\nMAXREQUEST=100\n");
    std::ofstream(server().directory() / "corvane.conf") << "COMMANDS=userDir\nMAXREQUEST=5\n";
    expectService();
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("userDir"), failure("userDir"));
}

TEST_F(LimitsTest, LetShutdownPassWhenItIsInTheList) {
    start("COMMANDS=shutdown\n");
    server().connect().send("shutdown\0"s);
    EXPECT_EQ(server().wait(), 0);
}

TEST_F(LimitsTest, OfMemoryCostAClientItsConnectionAndNothingElse) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers need more address space than the test leaves";
    }
    constexpr std::size_t addressSpace = 256U << 20U;
    constexpr std::size_t tooLarge = 300U << 20U;
    constexpr std::size_t tooLargeToLog = 60U << 20U;  // fits, but not with the copies for the log
    startWith({.prepare = [] {
        const rlimit limit{addressSpace, addressSpace};
        ::setrlimit(RLIMIT_AS, &limit);
    }});
    for (const std::size_t size : {tooLarge, tooLargeToLog}) {
        ClientSocket client = server().connect();
        std::string request = "unknown\n" + std::string(size, 'x') + '\0';
        client.trySend(request);
        EXPECT_TRUE(
            hasClosed(client.address(), "not enough memory (" + std::to_string(ENOMEM) + ")"));
        expectService();
    }
    ClientSocket gone = server().connect();
    gone.trySend("unknown\n" + std::string(120U << 20U, 'x'));  // once more would be too much
    gone.close();
    expectService();
    for (const std::size_t size : {70U << 20U, 50U << 20U}) {
        ClientSocket page = server().connect();
        page.trySend("GET /" + std::string(size, 'x') + " HTTP/1.1\r\n");
        page.untilEnd();
        expectService();
    }
}

TEST_F(LimitsTest, KeepOnlyTheBeginningOfAForeignLine) {
    constexpr std::size_t longest = 1023;
    constexpr std::size_t size = 20U << 20U;
    constexpr int smallBuffer = 4096;
    const std::string line = "GET /" + std::string(size, 'x') + " HTTP/1.1";
    start("");
    ClientSocket page = server().connect(smallBuffer);  // reads nothing before all is over
    page.send(line + "\r\n");
    expectService();
    EXPECT_TRUE(server().hasLogged("WARN " + clientLog + "Client " + page.address() +
                                   ": refused, not an application's request: '" +
                                   line.substr(0, longest) + "'"));
}

}  // namespace
}  // namespace corvane::test
