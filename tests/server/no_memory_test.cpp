// While memory is short: no connection ends the server, and a termination signal does.
// Small blocks are to be had even so, as in a process that has reached its limit.
#include <cstdlib>
#include <limits>
#include <new>

#include "log/log.h"
#include "server/server_fixture.h"

namespace corvane {
namespace {

constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();
std::size_t largestBlock = anySize;

class NoMemory : public ServerFixture {
  protected:
    NoMemory() { LogLevel::set(log4cpp::Priority::NOTICE); }
    ~NoMemory() override { LogLevel::set(previous_); }

  private:
    log4cpp::Priority::Value previous_ = LogLevel::get();
};

TEST_F(NoMemory, IsNeededToCloseManyClients) {
    constexpr std::size_t smallSize = 256;
    std::vector<test::ClientSocket> connected;
    while (connected.size() * sizeof(int) <= smallSize) {
        connected.push_back(connect());
    }
    largestBlock = smallSize;
    server.deinitServer();
    largestBlock = anySize;
    EXPECT_TRUE(server.clients.empty());
    EXPECT_TRUE(server.listeners.empty());
}

TEST_F(NoMemory, CostsANewClientItsConnectionAndNothingElse) {
    LogLevel::set(log4cpp::Priority::ERROR);      // the logging library needs memory itself
    const test::ClientSocket before = connect();  // what is needed once is there from then on
    test::ClientSocket refused(port);
    const int listener = server.listeners.front().sock;
    largestBlock = sizeof(Connection) - 1;
    bool hasThrown = false;
    try {
        server.processListener(listener);
    } catch (const std::bad_alloc&) {
        hasThrown = true;
    }
    largestBlock = anySize;
    EXPECT_FALSE(hasThrown);
    EXPECT_EQ(server.clients.size(), 1U);
    EXPECT_TRUE(refused.isEnded());
    const test::ClientSocket next = connect();
    EXPECT_EQ(server.clients.size(), 2U);
}

}  // namespace
}  // namespace corvane

// These take the place of the library's functions in this program; inlined, gcc would find malloc
// and free in place of new and delete.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const block = size > corvane::largestBlock ? nullptr : std::malloc(size);  // NOLINT
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }  // NOLINT
[[gnu::noinline]] void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);  // NOLINT
}
