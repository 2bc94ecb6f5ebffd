// Clients that do not behave, and surroundings that change under the server.
#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

#include "soak/promises.h"
#include "soak/scenarios.h"
#include "support/reply.h"

namespace corvane::soak {
namespace {

namespace fs = std::filesystem;
using test::failure;

constexpr std::size_t largeFile = std::size_t{64} * 1024 * 1024;
constexpr int patience = 10'000;  // milliseconds

// Waits until the server has taken everything that the client has sent out of its socket.
void awaitReceived(const ServerProcess& server, const ClientSocket& client) {
    const std::string& address = client.address();
    const unsigned long port = std::stoul(address.substr(address.find(':') + 1));
    // The server's line: its end, ours, established, nothing to send, nothing to receive (proc(5)).
    std::array<char, 64> emptied;
    static_cast<void>(std::snprintf(emptied.data(), emptied.size(),
                                    "0100007F:%04X 0100007F:%04lX 01 00000000:00000000",
                                    static_cast<unsigned>(server.port()), port));
    await([&] { return test::readFile("/proc/net/tcp").find(emptied.data()) != std::string::npos; },
          "the server receives what was sent");
}

void byteByByte(const ServerProcess& server) {
    ClientSocket client = server.connect();
    for (const char c : std::string("readText\nsmall\0", 15)) {
        client.send({&c, 1});
        awaitReceived(server, client);
    }
    expect(client.reply().find(">small text<") != std::string::npos, "a slow request is answered");
}

// A half request holds the server until its client is gone; the next client is served then.
void vanishWithinRequest(const ServerProcess& server) {
    ClientSocket vanishing = server.connect();
    vanishing.send("readText\nsma");
    ClientSocket waiting = server.connect();
    waiting.send(std::string("hello\0", 6));
    awaitReceived(server, vanishing);
    vanishing.reset();
    expect(waiting.reply() == failure("hello"), "others are served after a reset");
}

void vanishWithinReply(const ServerProcess& server) {
    ClientSocket vanishing = server.connect();
    vanishing.send(std::string("readText\nlarge\0", 15));
    expect(vanishing.hasSomething(patience), "a reply begins");
    vanishing.reset();
    expect(server.request("hello") == failure("hello"),
           "others are served after a reset within a reply");
}

// The server waits for room in a socket that nobody empties. It must be stoppable.
void neverRead(ServerProcess& server) {
    ClientSocket deaf = server.connect();
    deaf.send(std::string("readText\nlarge\0", 15));
    expect(deaf.hasSomething(patience), "a reply begins");
    await([&] { return test::stateOf(server.pid()) == 'S'; },
          "the server waits for the client to read");
    stop(server);
}

}  // namespace

void slowClients(const Options& options) {
    const std::size_t rounds = options.scaled(20, 3);
    std::size_t misdeeds = 0;
    for (std::size_t i = 0; i < rounds; ++i) {
        ServerProcess server(
            {.configuration = "log4cpp.priority=NOTICE\n", .files = {{"small", "small text"}}});
        server.directory().file("large", std::string(largeFile, 'x'));
        byteByByte(server);
        vanishWithinRequest(server);
        vanishWithinReply(server);
        neverRead(server);
        misdeeds += 4;
    }
    std::printf("%zu misdeeds, among them %zu replies of 64 MiB never read before SIGTERM",
                misdeeds, rounds);
}

void vanishingSurroundings(const Options& /*options*/) {
    ServerProcess server(
        {.configuration = "log4cpp.priority=DEBUG\nCURRDIR=work\n", .files = {{"work/kept", ""}}});
    ClientSocket client = server.connect();
    fs::remove(server.directory() / "cv0.log");
    fs::remove_all(server.home());
    fs::remove_all(server.directory() / "work");
    for (const char* command :
         {"currentDir", "tempDir", "userDir", "userDir\ndesktop", "userName", "listDir\n.",
          "regQueryValue\nHKEY_USERS\na\nb", "write\nx\ny", "makeDir\nd", "readText\nx",
          "copy\na\nb", "delete\nx", "getScreenRect"}) {
        const std::string reply = client.request(command);
        expect(reply.find(" Result=\"") != std::string::npos, "every request is answered");
    }
    const std::string full = client.request("write\n/dev/full\ntext");
    expect(full.find("FAILED") != std::string::npos, "a full disk is told");
    std::printf("log, working directory and home removed, disk full: 14 requests answered");
    stop(server);
}

}  // namespace corvane::soak
