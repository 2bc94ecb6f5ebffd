// The loop when nothing is left to do: how long it waits, and what it keeps. Linux only: it takes
// the place of epoll_wait(2), and looks at /proc.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/system.h"
#include "server/server_fixture.h"
#include "server/virtual_time_linux.h"
#include "support/process_status.h"
#include "support/sanitized.h"

namespace corvane {
namespace {

using namespace std::string_literals;

/// All its commands leave memory behind.
class HeavyServer : public Server {
  public:
    void processClientCommand(int /*sock*/, const std::string& /*cmd*/,
                              std::istream& /*params*/) override {
        expectFreedMemory();
        hasServed = true;
    }

    bool hasServed = false;
};

class ServerAtRest : public ServerFixture {};

TEST_F(ServerAtRest, CountsItsInactivityFromTheLastRequestOn) {
    static constexpr std::chrono::seconds memoryIsKept{1};
    HeavyServer heavy;
    heavy.options.inactivity = 2;
    heavy.initListener("127.0.0.1", 0);
    const std::string where = heavy.listeners.front().address;
    test::ClientSocket client(std::stoi(where.substr(where.find(':') + 1)));
    client.send("heavy\0"s);
    while (heavy.clients.empty()) {
        heavy.processListener(heavy.listeners.front().sock);
    }
    while (!heavy.hasServed) {
        heavy.processClient(heavy.clients.descriptors().front());
    }
    const test::VirtualTime time;
    heavy.process();
    EXPECT_EQ(time.waits().size(), 2U) << "one until memory is given back, one for the rest";
    EXPECT_TRUE(std::all_of(time.waits().begin(), time.waits().end(), [](auto length) {
        return length <= memoryIsKept;
    })) << "started anew";
}

TEST_F(ServerAtRest, DoesNotWaitWhileThereAreRequestsHoweverManyCameAtOnce) {
    server.options.inactivity = 5;
    for (const int count : {31, 32, 33, 64}) {
        std::vector<test::ClientSocket> all;
        for (int i = 0; i < count; ++i) {
            all.push_back(connect());
        }
        for (test::ClientSocket& client : all) {
            client.send(&client == &all.back() ? "shutdown\0"s : "hello\0"s);
        }
        const test::VirtualTime time;
        server.process();
        EXPECT_TRUE(time.waits().empty()) << count;
    }
}

TEST_F(ServerAtRest, HasGivenTheMemoryOfClientsThatSentAheadBack) {
    if (test::isSanitized) {
        GTEST_SKIP() << "sanitizers keep what is freed for a while";
    }
    constexpr int many = 400;
    constexpr long ahead = 30;          // KiB a client
    constexpr long little = 4L * 1024;  // KiB
    const test::LogCapture log(log4cpp::Priority::WARN);
    platform::keepFreedMemory();  // as the program does
    std::vector<test::ClientSocket> clients;
    for (int i = 0; i < many; ++i) {
        clients.push_back(connect());
    }
    const std::string requests = "one\0two\n"s + std::string(ahead * 1024, 'x') + '\0';
    const long before = test::residentMemoryOf(::getpid());
    const std::vector<int> socks = server.clients.descriptors();
    for (std::size_t i = 0; i < clients.size(); ++i) {
        clients[i].send(requests);
        server.clients.markReadable(*server.clients.find(socks[i]));
        EXPECT_TRUE(server.processClient(socks[i]));  // the first one only
    }
    EXPECT_GT(test::residentMemoryOf(::getpid()), before + many * ahead / 2);
    server.options.inactivity = 2;
    server.process();
    EXPECT_EQ(server.commands.size(), 2U * many);
    EXPECT_LT(test::residentMemoryOf(::getpid()), before + little);
}

}  // namespace
}  // namespace corvane
