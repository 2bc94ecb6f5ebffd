// The system's event queue under 3000 random things that happen to six connections.
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "platform/event_queue_fixture.h"

namespace corvane {
namespace {

constexpr std::size_t places = 6;
constexpr int steps = 3000;

class EventQueueModelTest : public OpenEventQueueTest {
  protected:
    EventQueueModelTest() {
        for (std::size_t i = 0; i < places; ++i) {
            socks.push_back(watched());
        }
    }

    std::size_t below(std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
    }

    /// One thing that a client or the server does.
    void act(std::size_t place) {
        test::ClientSocket& client = clients[place];
        switch (below(8)) {
            case 0:
            case 1:
            case 2:
                client.trySend(std::string(1 + below(9), 'x'));
                break;
            case 3:
                client.finishSending();
                break;
            case 4:
                below(4) == 0 ? client.reset() : client.close();
                break;
            default:
                receiveAt(place, 1 + below(9));
        }
    }

    void receiveAt(std::size_t place, std::size_t size) {
        const int sock = socks[place];
        const ssize_t count = receive(sock, size);
        if (count == 0 || (count == -1 && errno != EAGAIN)) {
            replace(place);
        } else if (count != static_cast<ssize_t>(size)) {
            known.erase(sock);
            if (behind.erase(sock) != 0) {
                EXPECT_TRUE(queue.rearm(sock));
            }
        }
    }

    void replace(std::size_t place) {
        queue.unwatch(socks[place]);
        known.erase(socks[place]);
        behind.erase(socks[place]);
        socks[place].close();
        socks[place] = watched();
        std::swap(clients[place], clients.back());
        clients.pop_back();
    }

    void noteListed() {
        listed();
        for (const platform::SocketEvent& event : events) {
            known.insert(event.sock);
            if (event.needsRearm) {
                behind.insert(event.sock);
            }
        }
    }

    std::mt19937 random{1};
    std::vector<FileDesc> socks;
    std::set<int> known;   // listed, and not drained since
    std::set<int> behind;  // to be re-armed when they are drained
};

// What is readable before the queue is asked must have been listed since it was last drained.
TEST_F(EventQueueModelTest, ListsWhatPollNamesWhateverHappensToTheSockets) {
    for (int step = 0; step < steps && !HasFailure(); ++step) {
        act(below(places));
        Sockets readable;
        std::copy_if(socks.begin(), socks.end(), std::back_inserter(readable),
                     [](int sock) { return isReady(sock); });
        noteListed();
        EXPECT_TRUE(std::all_of(readable.begin(), readable.end(),
                                [this](int sock) { return known.count(sock) == 1; }))
            << "step " << step;
    }
}

}  // namespace
}  // namespace corvane
