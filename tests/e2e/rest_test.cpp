// The server at rest after its work: little memory, no wake-ups.
#include <string>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

class RestTest : public ServerTest {};

TEST_F(RestTest, FollowsALargeReplyWithItsMemoryGivenBack) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers keep what is freed for a while";
    }
    constexpr std::size_t size = std::size_t{64} * 1024 * 1024;
    constexpr long little = 8L * 1024;  // KiB
    start("log4cpp.priority=NOTICE\n");
    const std::string file = server().directory().file("large", std::string(size, 'x'));
    ClientSocket client = server().connect();
    client.request("currentDir");
    const long before = server().residentMemory();
    EXPECT_GT(client.request("readText\n" + file).size(), size);
    EXPECT_TRUE(waitUntil([&] { return server().residentMemory() < before + little; }));
}

TEST_F(RestTest, FollowsALargeRequestBetweenSmallOnesWithItsMemoryGivenBack) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers keep what is freed for a while";
    }
    constexpr std::size_t size = std::size_t{64} * 1024 * 1024;
    constexpr long little = 8L * 1024;  // KiB
    start("log4cpp.priority=NOTICE\n");
    ClientSocket client = server().connect();
    client.request("currentDir");
    const long before = server().residentMemory();
    const std::string small("currentDir\0", 11);
    client.send(small + "unknown\n" + std::string(size, 'x') + '\0' + small);
    for (int replies = 0; replies < 3; ++replies) {
        EXPECT_FALSE(client.reply().empty());
    }
    EXPECT_TRUE(waitUntil([&] { return server().residentMemory() < before + little; }));
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
