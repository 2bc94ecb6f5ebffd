#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "soak/client.h"
#include "soak/scenarios.h"
#include "soak/server_process.h"

namespace soak {
namespace {

// What the resident size may grow by after the first tenth of the work.
constexpr long allowedGrowthKiB = 1024;
constexpr int sourceAddresses = 16;

std::string success(const std::string& action, const std::string& hint, const std::string& value) {
    return "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"" + action +
           "\" Result=\"SUCCESS\"" + (hint.empty() ? "" : " hint=\"" + hint + "\"") +
           (value.empty() ? ">" : "><Detail id=\"value\" extra=\"\" Value=\"" + value + "\" />") +
           "</Header></CorvaneMsg>";
}

struct Exchange {
    std::string request;
    std::string reply;
};

// The nth request of a mixture; the unknown commands tell requests apart. Few of them write, since
// many file systems wait for the disk when a file is written anew.
Exchange exchange(const ServerProcess& server, std::size_t n) {
    const std::string number = std::to_string(n);
    if (n % 50 == 1) {
        return {"write\nfile" + std::to_string(n % 7) + "\n" + number, success("write", "", "")};
    }
    switch (n % 4) {
        case 0:
            return {"userDir", success("userDir", "userDir", server.home().string())};
        case 1:
            return {"readByte\nletters\n" + std::to_string(n % 26),
                    success("readByte", "", std::to_string('a' + n % 26))};
        case 2:
            return {"listNet\n" + number,
                    "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"listNet\" "
                    "Result=\"FAILED\"></Header></CorvaneMsg>"};
        default:
            return {"no-" + number, unknownReply("no-" + number)};
    }
}

// Sends `count` requests in one go and checks their replies one by one.
void batch(Client& client, const ServerProcess& server, std::size_t first, std::size_t count) {
    std::string requests;
    std::vector<std::string> replies;
    for (std::size_t n = first; n < first + count; ++n) {
        const Exchange next = exchange(server, n);
        requests.append(next.request.c_str(), next.request.size() + 1);
        replies.push_back(next.reply);
    }
    client.send(requests);
    for (const std::string& wanted : replies) {
        const std::string reply = client.reply();
        expect(reply == wanted, "replies are right and in order, not " + reply);
    }
}

void prepareFiles(const ServerProcess& server) {
    std::ofstream(server.work() / "letters") << "abcdefghijklmnopqrstuvwxyz";
}

// Watches that nothing grows from the first tenth of the work on.
class Flatness {
  public:
    explicit Flatness(const ServerProcess& server)
        : server_(server), descriptors_(server.descriptorCount()) {}

    void warm() { resident_ = server_.residentKiB(); }

    // Once the clients are gone.
    void check() const {
        waitUntil([this] { return server_.descriptorCount() == descriptors_; },
                  "no descriptor is kept");
        const long now = server_.residentKiB();
        expect(now <= resident_ + allowedGrowthKiB,
               "memory stays flat: " + std::to_string(resident_) + " -> " + std::to_string(now));
        std::printf(", resident size %ld -> %ld KiB, %zu descriptors", resident_, now,
                    descriptors_);
    }

  private:
    const ServerProcess& server_;
    std::size_t descriptors_;
    long resident_ = 0;
};

}  // namespace

void manyRequests(const Options& options) {
    constexpr std::size_t batchSize = 50;
    const std::size_t total = options.scaled(1'000'000, 20'000);
    ServerProcess server(options.server, {});
    prepareFiles(server);
    Flatness flatness(server);
    {
        std::vector<Client> clients;
        clients.reserve(8);
        for (int i = 0; i < 8; ++i) {
            clients.emplace_back(server.port());
        }
        for (std::size_t done = 0; done < total; done += batchSize) {
            batch(clients[done / batchSize % clients.size()], server, done, batchSize);
            if (done / batchSize == total / batchSize / 10) {
                flatness.warm();
            }
        }
    }
    std::printf("%zu requests, replies right and in order", total);
    flatness.check();
    server.stop();
}

void manyClients(const Options& options) {
    constexpr std::size_t count = 900;
    const std::size_t rounds = options.scaled(50, 5);
    ServerProcess server(options.server, {});
    prepareFiles(server);
    Flatness flatness(server);
    {
        std::vector<Client> clients;
        for (std::size_t i = 0; i < count; ++i) {
            clients.emplace_back(server.port());
            clients.back().ask("hello");  // accepted, before the queue of connections is full
        }
        for (std::size_t round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < count; ++i) {
                const Exchange next = exchange(server, round + i);
                clients[i].send(next.request + '\0');
            }
            for (std::size_t i = 0; i < count; ++i) {
                expect(clients[i].reply() == exchange(server, round + i).reply,
                       "every client gets its own reply");
            }
            if (round == rounds / 10) {
                flatness.warm();
            }
        }
    }
    std::printf("%zu clients at once, %zu requests", count, count * rounds);
    flatness.check();
    server.stop();
}

void manyConnections(const Options& options) {
    const std::size_t total = options.scaled(100'000, 2'000);
    ServerProcess server(options.server, {});
    prepareFiles(server);
    Flatness flatness(server);
    for (std::size_t n = 0; n < total; ++n) {
        Client client(server.port(), 1 + static_cast<int>(n % sourceAddresses));
        batch(client, server, n, 1);
        if (n % 2 == 0) {
            client.reset();
        }
        if (n == total / 10) {
            flatness.warm();
        }
    }
    std::printf("%zu connections in a row, every other one reset", total);
    flatness.check();
    server.stop();
}

}  // namespace soak
