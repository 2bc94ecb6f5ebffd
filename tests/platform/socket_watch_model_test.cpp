// The watch against poll(2) over thousands of random steps.
#include <iterator>
#include <random>
#include <string>

#include "platform/socket_watch_fixture.h"

namespace corvane {
namespace {

using test::isReadable;
using test::Sockets;

constexpr std::size_t places = 8;

class SocketWatchModelTest : public test::SocketWatchFixture {
  protected:
    SocketWatchModelTest() {
        for (std::size_t i = 0; i < places; ++i) {
            connect();
        }
    }

    std::size_t below(std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random_);
    }

    /// A new connection in place of one that has ended.
    void replace(std::size_t place) {
        maybeEmpty_.erase(ends[place]);
        forget(ends[place]);
        ends[place].close();
        connect();
        std::swap(ends[place], ends.back());
        std::swap(clients[place], clients.back());
        ends.pop_back();
        clients.pop_back();
    }

    void takeBytes(std::size_t place) {
        const std::size_t size = 1 + below(9);
        const ssize_t count = receive(ends[place], size);
        if (count == 0 || (count == -1 && errno != EAGAIN)) {
            replace(place);
        } else if (count == static_cast<ssize_t>(size)) {
            maybeEmpty_.insert(ends[place]);
        } else {
            maybeEmpty_.erase(ends[place]);
        }
    }

    void step() {
        const std::size_t place = below(places);
        switch (below(8)) {
            case 0:
            case 1:
            case 2:
                clients[place].trySend(std::string(1 + below(9), 'x'));
                break;
            case 3:
                clients[place].finishSending();
                break;
            case 4:
                below(4) == 0 ? clients[place].reset() : clients[place].close();
                break;
            default:
                takeBytes(place);
        }
    }

    /// What has arrived by the first poll must be found; what is found must be there by the second,
    /// or nobody has said that it was taken.
    void compare() {
        Sockets before;
        std::copy_if(ends.begin(), ends.end(), std::inserter(before, before.end()), isReadable);
        const Sockets now = found();
        for (const int sock : ends) {
            EXPECT_LE(before.count(sock), now.count(sock));
            EXPECT_TRUE(now.count(sock) == 0 || maybeEmpty_.count(sock) == 1 || isReadable(sock));
        }
    }

  private:
    std::mt19937 random_{1};
    Sockets maybeEmpty_;
};

TEST_P(SocketWatchModelTest, ListsThoseThatPollNamesWhateverHappensToThem) {
    constexpr int steps = 4000;
    for (int i = 0; i < steps; ++i) {
        step();
        compare();
        ASSERT_FALSE(HasFailure()) << "step " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutTheQueue, SocketWatchModelTest, testing::Bool(),
                         [](const auto& mode) {
                             return std::string(mode.param ? "Queue" : "Select");
                         });

}  // namespace
}  // namespace corvane
