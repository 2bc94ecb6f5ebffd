#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "soak/promises.h"
#include "soak/scenarios.h"
#include "support/reply.h"

namespace corvane::soak {
namespace {

using test::failure;

ServerProcess::Options withDescriptors(rlim_t count) {
    return {.configuration = "log4cpp.priority=NOTICE\n", .prepare = [count] {
                const rlimit limit{count, count};
                ::setrlimit(RLIMIT_NOFILE, &limit);
            }};
}

std::vector<ClientSocket> connect(const ServerProcess& server, std::size_t count) {
    std::vector<ClientSocket> clients;
    for (std::size_t i = 0; i < count; ++i) {
        clients.emplace_back(server.port());
    }
    return clients;
}

}  // namespace

void outOfDescriptors(const Options& /*options*/) {
    constexpr std::size_t count = 100;
    constexpr long watched = 2;  // seconds
    const long littleTime = watched * ::sysconf(_SC_CLK_TCK) / 20;
    ServerProcess server(withDescriptors(32));
    {
        const std::vector<ClientSocket> clients = connect(server, count);
        await([&] { return timesLogged(server, "accept error 24") > 0; }, "the shortage is logged");
        const long before = server.processorTime();
        std::this_thread::sleep_for(std::chrono::seconds(watched));
        expect(server.processorTime() - before <= littleTime, "the server does not spin");
        expect(timesLogged(server, "accept error 24") < 50, "the log is not flooded");
    }
    const std::size_t warnings = timesLogged(server, "accept error 24");
    expect(server.request("hello") == failure("hello"), "the server recovers");
    std::printf("%zu clients with 32 descriptors, %zu warnings in 2 s, recovered", count, warnings);
    stop(server);
}

void beyondSelect(const Options& /*options*/) {
    constexpr std::size_t count = 1100;
    ServerProcess server(withDescriptors(4096));
    std::size_t served = 0;
    {
        std::vector<ClientSocket> clients;
        for (std::size_t i = 0; i < count; ++i) {
            clients.emplace_back(server.port());
            clients.back().trySend(std::string("hello\0", 6));
            served += clients.back().tryReply() ? 1 : 0;  // else it was closed
        }
    }
    const std::size_t refused = timesLogged(server, "accept error 24");
    expect(served > 1000 && served < 1024 && served + refused == count,
           "clients beyond select are refused, all others are served");
    await([&] { return server.descriptors() < 20; }, "no descriptor is kept");
    expect(server.request("hello") == failure("hello"), "the server recovers");
    std::printf("%zu clients served, %zu refused with a warning, recovered", served, refused);
    stop(server);
}

}  // namespace corvane::soak
