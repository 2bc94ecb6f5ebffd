// The loop when nothing is left to do: how long it waits, and what it keeps. Linux only: it looks
// at the limits of epoll_wait(2) and at /proc.
#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/system.h"
#include "server/server_fixture.h"
#include "support/process_status.h"
#include "support/sanitized.h"

namespace corvane {
namespace {

/// The limits of the waits, in milliseconds, while a test wants to know them.
std::vector<int>* limits = nullptr;

}  // namespace
}  // namespace corvane

// Takes the place of the C library's function in this program.
extern "C" int epoll_wait(int queue, epoll_event* events, int room, int limit) {
    if (corvane::limits != nullptr) {
        corvane::limits->push_back(limit);
    }
    return static_cast<int>(::syscall(SYS_epoll_pwait, queue, events, room, limit, nullptr, 0));
}

namespace corvane {
namespace {

using namespace std::string_literals;

/// All its commands leave memory behind.
class HeavyServer : public Server {
  public:
    void processClientCommand(int /*sock*/, const std::string& /*cmd*/,
                              std::istream& /*params*/) override {
        expectFreedMemory();
    }
};

class ServerAtRest : public ServerFixture {};

TEST_F(ServerAtRest, CountsItsInactivityFromTheLastRequestOn) {
    constexpr int secondsMemoryIsKept = 1;
    std::vector<int> waits;
    HeavyServer heavy;
    heavy.options.inactivity = 2;
    heavy.initListener("127.0.0.1", 0);
    const std::string where = heavy.listeners.front().address;
    test::ClientSocket client(std::stoi(where.substr(where.find(':') + 1)));
    client.send("heavy\0"s);
    limits = &waits;
    heavy.process();
    limits = nullptr;
    const auto isShort = [](int limit) { return limit <= secondsMemoryIsKept * 1000; };
    const auto first = std::find_if(waits.begin(), waits.end(), isShort);
    EXPECT_GT(waits.end() - first, 1) << "one until memory is given back, one for the rest";
    EXPECT_TRUE(std::all_of(first, waits.end(), isShort)) << "started anew";
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
