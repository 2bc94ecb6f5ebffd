// Descriptors: when the process has none left, when they become too large for the select set, and
// that the server spends no time while it can do nothing.
#include <sys/resource.h>
#include <sys/select.h>

#include <algorithm>
#include <cerrno>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

constexpr rlim_t fewDescriptors = 16;
constexpr rlim_t manyDescriptors = 2048;

void limitDescriptors(rlim_t count) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (count < FD_SETSIZE) {
        limit.rlim_max = count;  // the server raises its soft limit as far as it may
    }
    limit.rlim_cur = std::min(count, limit.rlim_max);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

class ShortageTest : public ServerTest {
  protected:
    std::string acceptError() const {
        return "WARN corvane.server.process.listener accept error " + std::to_string(EMFILE) +
               " on socket 127.0.0.1:" + std::to_string(server().port());
    }
    long acceptErrors() const {
        const std::vector<std::string> lines = server().logLines();
        return std::count(lines.begin(), lines.end(), acceptError());
    }
    std::string currentDir() const { return currentDirReply(server().directory().path()); }
};

TEST_F(ShortageTest, OfDescriptorsIsWarnedOfWithoutSpinningAndPasses) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers need descriptors of their own";
    }
    constexpr long mostWarnings = 50;
    constexpr long littleTime = 20;  // clock ticks of 10 ms
    startWith({.configuration = "log4cpp.priority=NOTICE\nINACTIVITY=0\n",
               .prepare = [] { limitDescriptors(fewDescriptors); }});
    std::vector<ClientSocket> clients;
    for (rlim_t i = 0; i < fewDescriptors; ++i) {
        clients.push_back(server().connect());
    }
    EXPECT_TRUE(server().waitForLog(acceptError()));
    const long before = server().processorTime();
    EXPECT_TRUE(waitUntil([this] { return acceptErrors() >= 10; }));  // about a second
    EXPECT_LT(acceptErrors(), mostWarnings);
    EXPECT_LT(server().processorTime(), before + littleTime);
    EXPECT_EQ(clients.front().request("currentDir"), currentDir());
    for (ClientSocket& client : clients) {
        EXPECT_EQ(client.request("currentDir"), currentDir());
        client.close();
    }
}

TEST_F(ShortageTest, OfDescriptorsThatHasPassedCostsNothing) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers need descriptors of their own";
    }
    constexpr int watched = 1000;    // milliseconds
    constexpr long littleTime = 10;  // clock ticks of 10 ms
    startWith({.configuration = "log4cpp.priority=NOTICE\n",
               .prepare = [] { limitDescriptors(fewDescriptors); }});
    {
        std::vector<ClientSocket> clients;
        for (rlim_t i = 0; i < fewDescriptors; ++i) {
            clients.push_back(server().connect());
        }
        EXPECT_TRUE(server().waitForLog(acceptError()));
    }
    ClientSocket idle = server().connect();
    EXPECT_EQ(idle.request("currentDir"), currentDir());
    const long before = server().processorTime();
    EXPECT_FALSE(idle.hasSomething(watched));
    EXPECT_LT(server().processorTime(), before + littleTime);
}

TEST_F(ShortageTest, OfDescriptorsDoesNotKeepTheInactivityTimeFromPassing) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers need descriptors of their own";
    }
    startWith({.configuration = "log4cpp.priority=NOTICE\nINACTIVITY=1\n",
               .prepare = [] { limitDescriptors(fewDescriptors); }});
    std::vector<ClientSocket> clients;
    for (rlim_t i = 0; i + 8 < fewDescriptors; ++i) {
        clients.push_back(server().connect());
    }
    EXPECT_EQ(server().wait(), 0);
}

TEST_F(ShortageTest, OfDescriptorsDoesNotBeginAtTheSoftLimit) {
    constexpr rlim_t soft = 64;
    constexpr rlim_t connections = 2 * soft;
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_max < 2 * connections) {
        GTEST_SKIP() << "this system allows no more than " << limit.rlim_max << " descriptors";
    }
    startWith({.configuration = "log4cpp.priority=NOTICE\n", .prepare = [] {
                   rlimit low{};
                   ::getrlimit(RLIMIT_NOFILE, &low);
                   low.rlim_cur = soft;
                   ::setrlimit(RLIMIT_NOFILE, &low);
               }});
    std::vector<ClientSocket> clients;
    for (rlim_t i = 0; i < connections; ++i) {
        clients.push_back(server().connect());
        EXPECT_EQ(clients.back().request("currentDir"), currentDir());
    }
}

TEST_F(ShortageTest, OfPlaceInTheSelectSetIsWarnedOf) {
    limitDescriptors(manyDescriptors);
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur < manyDescriptors) {
        GTEST_SKIP() << "this system allows no more than " << limit.rlim_cur << " descriptors";
    }
    constexpr int queued = 64;
    start("log4cpp.priority=NOTICE\n");
    std::vector<ClientSocket> clients;
    const int places = FD_SETSIZE - server().descriptorsAtStart();
    for (int i = 0; i < FD_SETSIZE; ++i) {
        clients.push_back(server().connect());
        if (i < places && i % queued == 0) {
            clients.back().request("currentDir");  // keeps the queue of the listener short
        }
    }
    EXPECT_TRUE(server().waitForLog(acceptError()));
    EXPECT_TRUE(clients.back().isEnded());
    EXPECT_EQ(clients.front().request("currentDir"), currentDir());
    const auto served = static_cast<std::size_t>(places);
    EXPECT_EQ(clients[served - 1].request("currentDir"), currentDir());
    EXPECT_TRUE(clients[served].isEnded());
}

TEST_F(ShortageTest, OfWorkCostsNothing) {
    start("log4cpp.priority=NOTICE\n");
    ClientSocket idle = server().connect();
    idle.request("currentDir");
    const long before = server().processorTime();
    EXPECT_FALSE(idle.hasSomething(1000));
    EXPECT_LE(server().processorTime(), before + 1);
}

}  // namespace
}  // namespace corvane::test
