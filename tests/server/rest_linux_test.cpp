// The loop when nothing is left to do: how long it waits, and what it keeps. Linux only: it takes
// the place of epoll_wait(2), and looks at /proc.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/event_queue.h"
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

TEST_F(ServerAtRest, HasAcceptedAllThatWereWaiting) {
    server.options.inactivity = 5;
    const test::ClientSocket first(port);
    const test::ClientSocket second(port);
    test::ClientSocket third(port);
    third.send("shutdown\0"s);
    const test::VirtualTime time;
    server.process();
    EXPECT_TRUE(time.waits().empty());
}

/// How many event queues of the system this process has open.
std::ptrdiff_t eventQueues() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::count_if(begin(descriptors), end(descriptors), [](const auto& entry) {
        std::error_code closed;
        return std::filesystem::read_symlink(entry, closed) == "anon_inode:[eventpoll]";
    });
}

TEST_F(ServerAtRest, HasOneEventQueueForAllItsListeners) {
    sigset_t none;
    sigemptyset(&none);
    platform::EventQueue queue;
    queue.open(none);
    if (!queue.watch(server.listeners.front().sock) && errno == ENOSYS) {
        GTEST_SKIP() << "this build has none";
    }
    const std::ptrdiff_t before = eventQueues();
    Server another;
    another.initListener("127.0.0.1", 0);
    another.initListener("127.0.0.1", 0);
    EXPECT_EQ(eventQueues(), before + 1);
}

TEST_F(ServerAtRest, WatchesAClientThatGetsTheNumberOfAClosedListener) {
    server.options.inactivity = 5;
    test::ClientSocket client(port);
    client.send("shutdown\0"s);
    server.initListener("127.0.0.1", 0);
    const int number = server.listeners[1].sock;
    server.closeSocket(number, false);
    const test::VirtualTime time;
    server.process();
    EXPECT_TRUE(time.waits().empty()) << number;
}

TEST_F(ServerAtRest, HasSeenAnEndThatCameTogetherWithARequest) {
    server.options.inactivity = 5;
    server.options.shutdownOnDisconnect = 1;
    test::ClientSocket client = connect();
    client.send("hello\0"s);
    client.finishSending();
    const test::VirtualTime time;
    server.process();
    EXPECT_TRUE(time.waits().empty());
    EXPECT_EQ(client.untilEnd(), "hello!\0"s);
}

}  // namespace
}  // namespace corvane
