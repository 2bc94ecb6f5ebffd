#include <cerrno>
#include <csignal>
#include <thread>

#include "server/request_guard.h"
#include "server/server_fixture.h"
#include "server/socket_exception.h"
#include "support/held_signals.h"
#include "support/thrown.h"

namespace corvane {
namespace {

using namespace std::string_literals;

const std::string readLog = "corvane.server.process.client.readrequest";

class ReadRequestTest : public ServerFixture {
  protected:
    /// Reads one request of the client that connected last.
    std::string read() {
        EXPECT_TRUE(server.readRequest(accepted(), request));
        return std::string(request.view());
    }

    ByteBuffer request;
};

TEST_F(ReadRequestTest, EndsAtAZeroByte) {
    const test::LogCapture log;
    test::ClientSocket client = connect();
    client.send("userDir\0"s);
    EXPECT_EQ(read(), "userDir");
    EXPECT_TRUE(log.contains("DEBUG " + readLog + " request size 7"));
}

TEST_F(ReadRequestTest, EndsAtAByteOfOneAsWell) {
    test::ClientSocket client = connect();
    client.send("a\r\nb\1");
    EXPECT_EQ(read(), "a\r\nb");
}

TEST_F(ReadRequestTest, MayBeEmpty) {
    test::ClientSocket client = connect();
    client.send("\0\1"s);
    EXPECT_EQ(read(), "");
    EXPECT_EQ(read(), "");
}

TEST_F(ReadRequestTest, LeavesWhatFollowsForTheNextOne) {
    test::ClientSocket client = connect();
    client.send("first\0second\1third\0"s);
    EXPECT_EQ(read(), "first");
    EXPECT_EQ(read(), "second");
    EXPECT_EQ(read(), "third");
}

TEST_F(ReadRequestTest, ConsumesOneLineEndAtTheBeginning) {
    test::ClientSocket client = connect();
    client.send("\r\nuserDir\0"s);
    EXPECT_FALSE(server.readRequest(accepted(), request));
    EXPECT_FALSE(server.readRequest(accepted(), request));
    EXPECT_EQ(read(), "userDir");
}

TEST_F(ReadRequestTest, KeepsEveryByteButTheTwoTerminators) {
    std::string bytes;
    for (int value = 2; value < 256; ++value) {
        bytes += static_cast<char>(value);
    }
    test::ClientSocket client = connect();
    client.send(bytes + '\1' + bytes + '\0');
    EXPECT_EQ(read(), bytes);
    EXPECT_EQ(read(), bytes);
}

TEST_F(ReadRequestTest, KeepsLineEndsInside) {
    test::ClientSocket client = connect();
    client.send("a\n\n\r\r\n\0"s);
    EXPECT_EQ(read(), "a\n\n\r\r\n");
}

TEST_F(ReadRequestTest, MayComeInTwoPiecesSplitAnywhere) {
    const std::string bytes = "write\r\nfile\ndata \xFF\n\0"s;
    test::ClientSocket client = connect();
    for (std::size_t split = 1; split < bytes.size(); ++split) {
        client.send(bytes.substr(0, split));
        std::thread rest([&] { client.send(bytes.substr(split)); });
        EXPECT_EQ(read(), bytes.substr(0, bytes.size() - 1)) << split;
        rest.join();
    }
}

TEST_F(ReadRequestTest, HasNoLimitOfItsSize) {
    const std::string bytes(std::size_t{12} * 1024 * 1024, 'x');
    test::ClientSocket client = connect();
    std::thread sender([&] { client.send(bytes + "\0next\0"s); });
    EXPECT_EQ(read(), bytes);
    EXPECT_EQ(read(), "next");
    sender.join();
}

TEST_F(ReadRequestTest, LetsSignalsInEvenWhenNothingHasToBeWaitedFor) {
    const HeldSignals signals;
    test::ClientSocket client = connect();
    client.send(std::string(100'000, 'x') + '\0');  // more than is received at once
    ASSERT_EQ(::raise(SIGCHLD), 0);
    read();
    EXPECT_EQ(signals.handled(), 1);
}

TEST_F(ReadRequestTest, LogsEveryByteInOrderWhenAsked) {
    server.options.debugRequestRead = true;
    test::ClientSocket client = connect();
    client.send("\nA\xFF\0"s);
    const test::LogCapture log;
    EXPECT_FALSE(server.readRequest(accepted(), request));
    read();
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "DEBUG " + readLog + " request byte 10 (0x0xa)",
                               "DEBUG " + readLog + " request byte 65 (0x0x41)",
                               "DEBUG " + readLog + " request byte -1 (0x0xffffffff)",
                               "DEBUG " + readLog + " request byte 0 (0x0)",
                               "DEBUG " + readLog + " request size 2",
                           }));
}

TEST_F(ReadRequestTest, EndsWithTheConnection) {
    test::ClientSocket client = connect();
    client.send("half");
    client.finishSending();
    try {
        server.readRequest(accepted(), request);
        FAIL();
    } catch (const SocketClosedException& e) {
        EXPECT_TRUE(e.graceful);
        EXPECT_EQ(e.message, "Socket " + client.address() + " was closed gracefully (0)");
    }
}

TEST_F(ReadRequestTest, NoticesAReset) {
    test::ClientSocket client = connect();
    const std::string where = client.address();
    client.reset();
    try {
        server.readRequest(accepted(), request);
        FAIL();
    } catch (const SocketClosedException& e) {
        EXPECT_FALSE(e.graceful);
        EXPECT_EQ(e.message, "Socket " + where + " was closed by reset (54)");
    }
}

TEST_F(ReadRequestTest, FailsOnADescriptorThatIsNotOpen) {
    try {
        server.readRequest(-1, request);
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.message, "recv() error (" + std::to_string(EBADF) + ")");
    }
}

TEST_F(ReadRequestTest, MayBeAsLongAsTheLimitButNotLonger) {
    server.options.maxRequest = 8;
    for (const std::string& longer : {"123456789"s, "123456789\0"s}) {  // with its end or before
        test::ClientSocket client = connect();
        client.send("12345678\0"s);
        EXPECT_EQ(read(), "12345678");
        client.send(longer);
        EXPECT_EQ(test::thrownBy([&] { server.readRequest(accepted(), request); }),
                  "request is longer than 8 bytes");
    }
}

TEST_F(ReadRequestTest, RefusesAnHttpRequestAsSoonAsItsFirstLineIsComplete) {
    test::ClientSocket client = connect();
    client.send("GET / HTTP/1.1\r\n");
    try {
        server.readRequest(accepted(), request);
        FAIL();
    } catch (const ForeignRequest& e) {
        EXPECT_EQ(e.line, "GET / HTTP/1.1");
    }
}

TEST_F(ReadRequestTest, RefusesAnHttpRequestWhereverItsFirstLineIsCutOnTheWay) {
    constexpr std::size_t received = std::size_t{32} * 1024;  // at once
    const std::string method = "PROPFIND ";
    const std::string version = " HTTP/1.1";
    for (std::size_t size = received - 2; size <= received + 2; ++size) {
        const std::string path(size - method.size() - version.size(), 'x');
        test::ClientSocket client = connect();
        client.send(method + path + version + "\nHost: x\n\nshutdown\0"s);
        EXPECT_THROW(server.readRequest(accepted(), request), ForeignRequest) << size;
    }
}

TEST_F(ReadRequestTest, LooksForHttpInTheFirstLineOnly) {
    test::ClientSocket client = connect();
    client.send("write\nfile\nGET / HTTP/1.1\n\0"s);
    EXPECT_EQ(read(), "write\nfile\nGET / HTTP/1.1\n");
}

TEST_F(ReadRequestTest, TakesHttpForACommandWhenItIsAllowed) {
    server.options.allowHttp = true;
    test::ClientSocket client = connect();
    client.send("GET / HTTP/1.1\r\n\1");
    EXPECT_EQ(read(), "GET / HTTP/1.1\r\n");
}

TEST_F(ReadRequestTest, RefusesATlsGreetingThoughItHoldsATerminator) {
    for (const char* greeting : {"\x16\x03\x01\x02\x03", "\x80\x46\x01\x03\x01"}) {
        test::ClientSocket client = connect();
        client.send(greeting);
        EXPECT_THROW(server.readRequest(accepted(), request), ForeignRequest);
    }
}

}  // namespace
}  // namespace corvane
