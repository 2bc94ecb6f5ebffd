#include <cstdio>
#include <string>
#include <vector>

#include "soak/promises.h"
#include "soak/scenarios.h"
#include "support/reply.h"

namespace corvane::soak {
namespace {

using test::failure;
using test::success;
using test::valueDetail;

// What the resident size may grow by after the first tenth of the work.
constexpr long allowedGrowthKiB = 1024;
constexpr int sourceAddresses = 16;

// A server that logs no request, with the file that the requests read.
ServerProcess::Options prepared() {
    return {.configuration = "log4cpp.priority=NOTICE\n",
            .files = {{"letters", "abcdefghijklmnopqrstuvwxyz"}}};
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
        return {"write\nfile" + std::to_string(n % 7) + "\n" + number, success("write")};
    }
    switch (n % 4) {
        case 0:
            return {"userDir", success("userDir", valueDetail(server.home()), "userDir")};
        case 1:
            return {"readByte\nletters\n" + std::to_string(n % 26),
                    success("readByte", valueDetail(std::to_string('a' + n % 26)))};
        case 2:
            return {"listNet\n" + number, failure("listNet")};
        default:
            return {"no-" + number, failure("no-" + number)};
    }
}

// Sends `count` requests in one go and checks their replies one by one.
void batch(ClientSocket& client, const ServerProcess& server, std::size_t first,
           std::size_t count) {
    std::string requests;
    std::vector<std::string> replies;
    for (std::size_t n = first; n < first + count; ++n) {
        const Exchange next = exchange(server, n);
        requests += next.request + '\0';
        replies.push_back(next.reply);
    }
    client.send(requests);
    for (const std::string& wanted : replies) {
        const std::string reply = client.reply();
        expect(reply == wanted, "replies are right and in order, not " + reply);
    }
}

// Watches that nothing grows from the first tenth of the work on.
class Flatness {
  public:
    explicit Flatness(const ServerProcess& server)
        : server_(server), descriptors_(server.descriptors()) {}

    void warm() { resident_ = server_.residentMemory(); }

    // Once the clients are gone.
    void check() const {
        await([this] { return server_.descriptors() == descriptors_; }, "no descriptor is kept");
        const long now = server_.residentMemory();
        expect(now <= resident_ + allowedGrowthKiB,
               "memory stays flat: " + std::to_string(resident_) + " -> " + std::to_string(now));
        std::printf(", resident size %ld -> %ld KiB, %d descriptors", resident_, now, descriptors_);
    }

  private:
    const ServerProcess& server_;
    int descriptors_;
    long resident_ = 0;
};

}  // namespace

void manyRequests(const Options& options) {
    constexpr std::size_t batchSize = 50;
    const std::size_t total = options.scaled(1'000'000, 20'000);
    ServerProcess server(prepared());
    Flatness flatness(server);
    {
        std::vector<ClientSocket> clients;
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
    stop(server);
}

void manyClients(const Options& options) {
    constexpr std::size_t count = 900;
    const std::size_t rounds = options.scaled(50, 5);
    ServerProcess server(prepared());
    Flatness flatness(server);
    {
        std::vector<ClientSocket> clients;
        for (std::size_t i = 0; i < count; ++i) {
            clients.emplace_back(server.port());
            clients.back().request("hello");  // accepted, before the queue of connections is full
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
    stop(server);
}

void manyConnections(const Options& options) {
    const std::size_t total = options.scaled(100'000, 2'000);
    ServerProcess server(prepared());
    Flatness flatness(server);
    for (std::size_t n = 0; n < total; ++n) {
        ClientSocket client(server.port(), 0, 1 + static_cast<int>(n % sourceAddresses));
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
    stop(server);
}

}  // namespace corvane::soak
