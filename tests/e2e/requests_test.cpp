// Requests as they arrive over a real connection, split, joined, long and short.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>

#include "e2e/server_test.h"

namespace corvane::test {
namespace {

using Lines = std::vector<std::string>;
using namespace std::string_literals;

const std::string clientLog = "corvane.server.process.client ";

class RequestsTest : public ServerTest {
  protected:
    std::string currentDir() const { return currentDirReply(server().directory().path()); }
};

TEST_F(RequestsTest, EndWithAZeroByteOrAByteOfOne) {
    ClientSocket client = start().connect();
    client.send("currentDir\1currentDir\0"s);
    EXPECT_EQ(client.reply(), currentDir());
    EXPECT_EQ(client.reply(), currentDir());
}

TEST_F(RequestsTest, GetOneReplyEachThatEndsWithOneZeroByte) {
    ClientSocket client = start().connect();
    client.send("currentDir\0currentDir\0"s);
    client.finishSending();
    EXPECT_EQ(client.untilEnd(), currentDir() + '\0' + currentDir() + '\0');
}

TEST_F(RequestsTest, AreAllServedHoweverManyComeAtOnce) {
    constexpr int many = 5000;  // more than the server receives at once
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    std::string requests;
    std::string replies;
    for (int i = 0; i < many; ++i) {
        requests += "currentDir\0"s;
        replies += currentDir() + '\0';
    }
    client.send(requests);
    client.finishSending();
    EXPECT_TRUE(client.untilEnd() == replies);
}

TEST_F(RequestsTest, MayBeSplitAtEveryByte) {
    const std::string request = "makeDir\r\nsome directory\r\n\0"s;
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    for (std::size_t split = 1; split < request.size(); ++split) {
        client.send(request.substr(0, split));
        client.send(request.substr(split));
        client.reply();
    }
    for (const char c : "currentDir\0"s) {
        client.send({&c, 1});
    }
    EXPECT_EQ(client.reply(), currentDir());
}

TEST_F(RequestsTest, ArrivingByteByByteAreLoggedByteByByte) {
    ClientSocket client = start("DEBUGREQUESTREAD=true\n").connect();
    const std::string log = "DEBUG corvane.server.process.client.readrequest request ";
    client.send("x");
    EXPECT_TRUE(server().waitForLog("request byte 120 (0x0x78)"));
    client.send("\r");
    EXPECT_TRUE(server().waitForLog("request byte 13 (0x0xd)"));
    client.send("\0"s);
    EXPECT_EQ(client.reply(), failure("x"));
    const Lines lines = server().logLines();
    const Lines expected{log + "byte 120 (0x0x78)", log + "byte 13 (0x0xd)", log + "byte 0 (0x0)",
                         log + "size 2"};
    EXPECT_NE(std::search(lines.begin(), lines.end(), expected.begin(), expected.end()),
              lines.end());
}

TEST_F(RequestsTest, GetNoReplyToLineEndsInFrontOfThem) {
    ClientSocket client = start().connect();
    client.send("\r\n\n\rcurrentDir\0"s);
    EXPECT_EQ(client.reply(), currentDir());
    EXPECT_FALSE(client.hasSomething());
}

TEST_F(RequestsTest, ThatAreEmptyAreWarnedOfAndNotAnswered) {
    ClientSocket client = start().connect();
    client.send("\0currentDir\0"s);
    EXPECT_EQ(client.reply(), currentDir());
    EXPECT_TRUE(server().hasLogged("WARN " + clientLog + "Empty request from " + client.address()));
}

TEST_F(RequestsTest, OfManyClientsAreServedInTurn) {
    start("log4cpp.priority=NOTICE\n");
    constexpr int each = 50;
    std::vector<ClientSocket> clients;
    clients.reserve(each);
    for (int i = 0; i < each; ++i) {
        clients.push_back(server().connect());
    }
    for (ClientSocket& client : clients) {
        std::string many;
        for (int i = 0; i < each; ++i) {
            many += "currentDir\0"s;
        }
        client.send(many);
    }
    for (ClientSocket& client : clients) {
        for (int i = 0; i < each; ++i) {
            EXPECT_EQ(client.reply(), currentDir());
        }
    }
}

TEST_F(RequestsTest, OfTheClientThatWasAcceptedFirstComeFirst) {
    start();
    ClientSocket first = server().connect();
    first.request("currentDir");
    ClientSocket second = server().connect();
    second.request("currentDir");
    server().suspend();  // both are ready when the server looks again
    second.send("secondOne\0secondTwo\0"s);
    first.send("firstOne\0firstTwo\0"s);
    server().signal(SIGCONT);
    second.reply();
    EXPECT_EQ(second.reply(), failure("secondTwo"));
    Lines order;
    for (const std::string& line : server().logLines()) {
        if (const std::size_t at = line.find(": command '"); at != std::string::npos) {
            order.push_back(line.substr(at + 11, line.rfind("' not found") - at - 11));
        }
    }
    EXPECT_EQ(order, (Lines{"firstOne", "firstTwo", "secondOne", "secondTwo"}));
}

TEST_F(RequestsTest, HaveParametersOfUpTo1023Characters) {
    start("log4cpp.priority=NOTICE\n");
    for (const std::size_t length : {1022U, 1023U}) {
        const std::string which(length, 'x');
        EXPECT_EQ(server().request("userDir\n" + which + "\n"),
                  success("userDir", valueDetail(server().home()), "userDir " + which));
    }
    for (const std::size_t length : {1024U, 2000U}) {
        EXPECT_EQ(server().request("userDir\n" + std::string(length, 'x') + "\n"),
                  success("userDir", valueDetail(server().home()), "userDir"));
    }
}

TEST_F(RequestsTest, OfTenMebibytesWriteAWholeFile) {
    start("log4cpp.priority=NOTICE\n");
    std::string data;
    while (data.size() < std::size_t{10} * 1024 * 1024) {
        data += std::to_string(data.size()) + "\r\n\n";
    }
    const std::string path = server().directory() / "written";
    ClientSocket client = server().connect();
    client.send("write\n" + path + "\n" + data + "\0currentDir\0"s);
    EXPECT_EQ(client.reply(), success("write"));
    EXPECT_EQ(client.reply(), currentDir());
    EXPECT_TRUE(readFile(path) == data);
}

TEST_F(RequestsTest, AreAnsweredWithoutWaitingForAnAcknowledgement) {
    constexpr int count = 2000;
    constexpr long tooLong = 30;  // milliseconds; a delayed acknowledgement takes 40 or more
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    int late = 0;
    for (int i = 0; i < count; ++i) {
        const auto before = std::chrono::steady_clock::now();
        client.request("currentDir");
        const auto took = std::chrono::steady_clock::now() - before;
        late += took > std::chrono::milliseconds(tooLong) ? 1 : 0;
    }
    EXPECT_LT(late, count / 10);  // a loaded machine may hold some of them up, not so many
}

TEST_F(RequestsTest, AreAnsweredWhenTheLogIsDeleted) {
    start();
    const int port = server().port();
    std::filesystem::remove(server().directory() / "cv0.log");
    ClientSocket client(port);
    EXPECT_EQ(client.request("currentDir"), currentDir());
    client.send("shutdown\0"s);
    EXPECT_EQ(server().wait(), 0);
}

TEST_F(RequestsTest, AreAnsweredWhenTheWorkingDirectoryIsRemoved) {
    start("CURRDIR=tmp\n");
    std::filesystem::remove(server().directory() / "tmp");
    EXPECT_EQ(server().request("currentDir"), currentDirReply(""));
    EXPECT_EQ(server().request("userDir"),
              success("userDir", valueDetail(server().home()), "userDir"));
}

}  // namespace
}  // namespace corvane::test
