// Clients that vanish, send garbage or do not read: nothing they do may end or block the server.
#include <random>
#include <string>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

using namespace std::string_literals;

class BrokenClientsTest : public ServerTest {
  protected:
    void expectService() {
        EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
    }
};

TEST_F(BrokenClientsTest, MayResetTheConnectionAtAnyMomentOfAReply) {
    constexpr int rounds = 40;
    start("log4cpp.priority=NOTICE\n");
    const std::string file = server().directory().file("large", std::string(8'000'000, 'x'));
    std::mt19937 random(1);  // a failure must come back
    for (int i = 0; i < rounds; ++i) {
        ClientSocket client = server().connect();
        client.send("readText\n" + file + '\0');
        client.hasSomething(static_cast<int>(random() % 10));
        client.reset();
    }
    expectService();
}

TEST_F(BrokenClientsTest, MayCloseTheConnectionBeforeTheReply) {
    start("log4cpp.priority=NOTICE\n");
    const std::string file = server().directory().file("large", std::string(8'000'000, 'x'));
    const std::string request = "readText\n" + file + '\0';
    for (int i = 0; i < 20; ++i) {
        ClientSocket client = server().connect();
        client.send(request);
        client.send(request);
    }
    expectService();
}

TEST_F(BrokenClientsTest, AreClosedWithTheAddressTheyHad) {
    ClientSocket client = start().connect();
    client.request("currentDir");
    const std::string address = client.address();
    client.reset();
    EXPECT_TRUE(server().waitForLog("INFO corvane.server.process.client Client " + address +
                                    " has closed connection\nINFO corvane.server.closesocket "
                                    "Closing socket " +
                                    address + "\n"));
}

TEST_F(BrokenClientsTest, MaySendHalfARequestAndGo) {
    start();
    ClientSocket closing = server().connect();
    closing.send("write\n/dev/null\nhalf");
    closing.close();
    ClientSocket resetting = server().connect();
    resetting.send("write\n/dev/null\nhalf");
    resetting.reset();
    expectService();
}

TEST_F(BrokenClientsTest, MayLeaveWithoutAWord) {
    start("log4cpp.priority=NOTICE\n");
    for (int i = 0; i < 200; ++i) {
        ClientSocket client = server().connect();
        if (i % 2 == 0) {
            client.reset();
        }
    }
    expectService();
}

TEST_F(BrokenClientsTest, MayHalfCloseAndStillGetTheirReplies) {
    ClientSocket client = start().connect();
    client.send("currentDir\0"s);
    client.finishSending();
    EXPECT_EQ(client.reply(), currentDirReply(server().directory().path()));
    EXPECT_TRUE(client.isEnded());
}

TEST_F(BrokenClientsTest, BySendingGarbageNeverHarmTheServer) {
    constexpr int connections = 200;
    start("log4cpp.priority=NOTICE\n");
    std::mt19937 random(2);  // a failure must come back
    for (int i = 0; i < connections; ++i) {
        std::string garbage(random() % 3000, '\0');
        for (char& c : garbage) {
            c = static_cast<char>(random());
        }
        ClientSocket client = server().connect();
        client.trySend(garbage);
        if (i % 3 == 0) {
            client.reset();
        }
    }
    expectService();
}

TEST_F(BrokenClientsTest, AmongTwoThousandCostNothing) {
    constexpr int connections = 2000;
    constexpr long growth = isSanitized ? 64 * 1024 : 2 * 1024;  // KiB
    start("log4cpp.priority=NOTICE\n");
    const std::string expected = currentDirReply(server().directory().path());
    const std::string garbage = "\r\n\xFF\x02garbage\0\1\nmore\nlines\0"s;
    long before = 0;
    for (int i = 0; i < connections; ++i) {
        ClientSocket client = server().connect();
        if (i % 2 == 0) {
            client.send(garbage);
            client.reset();
        } else {
            ASSERT_EQ(client.request("currentDir"), expected);
        }
        if (i == connections / 4) {
            before = server().residentMemory();
        }
    }
    EXPECT_LT(server().residentMemory(), before + growth);
}

TEST_F(BrokenClientsTest, AreForgottenWhenTheyAreGone) {
    constexpr int connections = 12'000;
    constexpr int queued = 64;  // connections that may wait for the server to accept them
    constexpr long growth = isSanitized ? 64 * 1024 : 512;  // KiB, less than 50 bytes of each
    start("log4cpp.priority=NOTICE\n");
    long before = 0;
    for (int i = 0; i < connections; ++i) {
        server().connect().reset();
        if (i % queued == 0) {
            server().request("currentDir");
        }
        if (i == connections / 8) {
            before = server().residentMemory();
        }
    }
    EXPECT_LT(server().residentMemory(), before + growth);
}

TEST_F(BrokenClientsTest, MayHoldManyConnectionsOpenAtOnce) {
    constexpr int connections = 500;
    constexpr int queued = 64;  // connections that may wait for the server to accept them
    start("log4cpp.priority=NOTICE\n");
    const std::string expected = currentDirReply(server().directory().path());
    std::vector<ClientSocket> clients;
    clients.reserve(connections);
    for (int i = 0; i < connections; ++i) {
        clients.push_back(server().connect());
        if (i % queued == 0) {
            ASSERT_EQ(clients.back().request("currentDir"), expected);
        }
    }
    for (ClientSocket& client : clients) {
        ASSERT_EQ(client.request("currentDir"), expected);
    }
}

}  // namespace
}  // namespace corvane::test
