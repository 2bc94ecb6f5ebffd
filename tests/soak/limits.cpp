#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "soak/client.h"
#include "soak/scenarios.h"
#include "soak/server_process.h"

namespace soak {
namespace {

using std::chrono::milliseconds;

std::vector<Client> connect(const ServerProcess& server, std::size_t count) {
    std::vector<Client> clients;
    for (std::size_t i = 0; i < count; ++i) {
        clients.emplace_back(server.port());
    }
    return clients;
}

}  // namespace

void outOfDescriptors(const Options& options) {
    constexpr std::size_t count = 100;
    constexpr milliseconds watched{2000};
    ServerProcess server(options.server, {.descriptors = 32});
    {
        const std::vector<Client> clients = connect(server, count);
        waitUntil([&] { return server.logged("accept error 24") > 0; }, "the shortage is logged");
        const milliseconds before = server.processorTime();
        std::this_thread::sleep_for(watched);
        expect(server.processorTime() - before <= watched / 20, "the server does not spin");
        expect(server.logged("accept error 24") < 50, "the log is not flooded");
    }
    const std::size_t warnings = server.logged("accept error 24");
    expect(Client(server.port()).ask("hello") == unknownReply("hello"), "the server recovers");
    std::printf("%zu clients with 32 descriptors, %zu warnings in 2 s, recovered", count, warnings);
    server.stop();
}

void beyondSelect(const Options& options) {
    constexpr std::size_t count = 1100;
    ServerProcess server(options.server, {.descriptors = 4096});
    std::size_t served = 0;
    {
        std::vector<Client> clients;
        std::string reply;
        for (std::size_t i = 0; i < count; ++i) {
            clients.emplace_back(server.port());
            clients.back().send(std::string("hello\0", 6));
            served += clients.back().tryReply(reply) ? 1 : 0;  // else it was closed
        }
    }
    const std::size_t refused = server.logged("accept error 24");
    expect(served > 1000 && served < 1024 && served + refused == count,
           "clients beyond select are refused, all others are served");
    waitUntil([&] { return server.descriptorCount() < 20; }, "no descriptor is kept");
    expect(Client(server.port()).ask("hello") == unknownReply("hello"), "the server recovers");
    std::printf("%zu clients served, %zu refused with a warning, recovered", served, refused);
    server.stop();
}

}  // namespace soak
