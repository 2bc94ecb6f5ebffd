// The server at rest after its work: little memory, no wake-ups.
#include <optional>
#include <string>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

class RestTest : public ServerTest {};

// The memory of what is large: it is given back soon.
class LargeWork : public ServerTest {
  protected:
    static constexpr std::size_t size = std::size_t{64} * 1024 * 1024;

    void SetUp() override {
        if (isSanitized) {
            GTEST_SKIP() << "sanitizers keep what is freed for a while";
        }
        client = start("log4cpp.priority=NOTICE\n").connect();
        expectService();
        before_ = server().residentMemory();
    }
    void TearDown() override {
        client.reset();
        ServerTest::TearDown();
    }
    void expectService() {
        EXPECT_EQ(client->request("currentDir"), currentDirReply(server().directory().path()));
    }
    void expectMemoryGivenBack() {
        constexpr long little = 8L * 1024;  // KiB
        EXPECT_TRUE(waitUntil([&] { return server().residentMemory() < before_ + little; }));
    }

    std::optional<ClientSocket> client;
    const std::string large = std::string(size, 'x');

  private:
    long before_ = 0;
};

TEST_F(LargeWork, ThatIsAReplyGivesItsMemoryBack) {
    const std::string file = server().directory().file("large", large);
    EXPECT_GT(client->request("readText\n" + file).size(), size);
    expectMemoryGivenBack();
}

TEST_F(LargeWork, ThatIsARequestGivesItsMemoryBack) {
    EXPECT_EQ(client->request("unknown\n" + large), failure("unknown"));
    expectService();
    expectMemoryGivenBack();
}

TEST_F(LargeWork, ThatIsARequestBetweenSmallOnesGivesItsMemoryBack) {
    const std::string small("currentDir\0", 11);
    client->send(small + "unknown\n" + large + '\0' + small);
    for (int replies = 0; replies < 3; ++replies) {
        EXPECT_FALSE(client->reply().empty());
    }
    expectMemoryGivenBack();
}

TEST_F(LargeWork, ThatIsARequestWithoutAnEndGivesItsMemoryBack) {
    {
        ClientSocket ending = server().connect();
        ending.send("write\nnever complete\n" + large);
    }
    expectService();
    expectMemoryGivenBack();
}

TEST_F(LargeWork, ThatIsRefusedGivesItsMemoryBack) {
    ClientSocket page = server().connect();
    page.send("GET /" + large + " HTTP/1.1\r\n");
    expectService();
    expectMemoryGivenBack();
}

TEST_F(RestTest, IsUndisturbedAfterACommandThatChangesFiles) {
    constexpr int watched = 2000;  // milliseconds
    constexpr long fewWaits = 10;
    constexpr long littleTime = 10;  // clock ticks, a twentieth of the time watched
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    const std::string made = server().directory() / "made";
    EXPECT_EQ(client.request("makeDir\n" + made), success("makeDir", "", made));
    EXPECT_FALSE(client.hasSomething(watched));  // memory is given back meanwhile
    const long waits = waitsOf(server().pid());
    const long time = server().processorTime();
    EXPECT_FALSE(client.hasSomething(watched));
    EXPECT_LE(waitsOf(server().pid()), waits + fewWaits);
    EXPECT_LE(server().processorTime(), time + littleTime);
}

}  // namespace
}  // namespace corvane::test
