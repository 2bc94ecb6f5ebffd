// Clients that do not behave, and surroundings that change under the server.
#include <cstdio>
#include <fstream>
#include <string>

#include "soak/client.h"
#include "soak/scenarios.h"
#include "soak/server_process.h"

namespace soak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t largeFile = std::size_t{64} * 1024 * 1024;

void byteByByte(const ServerProcess& server) {
    Client client(server.port());
    for (const char c : std::string("readText\nsmall\0", 15)) {
        client.send({&c, 1});
        pause();
    }
    expect(client.reply().find(">small text<") != std::string::npos, "a slow request is answered");
}

// A half request holds the server until its client is gone; the next client is served then.
void vanishWithinRequest(const ServerProcess& server) {
    Client vanishing(server.port());
    vanishing.send("readText\nsma");
    Client waiting(server.port());
    waiting.send(std::string("hello\0", 6));
    vanishing.awaitReceived();
    vanishing.reset();
    expect(waiting.reply() == unknownReply("hello"), "others are served after a reset");
}

void vanishWithinReply(const ServerProcess& server) {
    Client vanishing(server.port());
    vanishing.send(std::string("readText\nlarge\0", 15));
    vanishing.awaitReply();
    vanishing.reset();
    expect(Client(server.port()).ask("hello") == unknownReply("hello"),
           "others are served after a reset within a reply");
}

// The server waits for room in a socket that nobody empties. It must be stoppable.
void neverRead(ServerProcess& server) {
    Client deaf(server.port());
    deaf.send(std::string("readText\nlarge\0", 15));
    deaf.awaitReply();
    waitUntil([&] { return server.isAsleep(); }, "the server waits for the client to read");
    server.stop();
}

}  // namespace

void slowClients(const Options& options) {
    const std::size_t rounds = options.scaled(20, 3);
    std::size_t misdeeds = 0;
    for (std::size_t i = 0; i < rounds; ++i) {
        ServerProcess server(options.server, {});
        std::ofstream(server.work() / "small") << "small text";
        std::ofstream(server.work() / "large") << std::string(largeFile, 'x');
        byteByByte(server);
        vanishWithinRequest(server);
        vanishWithinReply(server);
        neverRead(server);
        misdeeds += 4;
    }
    std::printf("%zu misdeeds, among them %zu replies of 64 MiB never read before SIGTERM",
                misdeeds, rounds);
}

void vanishingSurroundings(const Options& options) {
    ServerProcess server(options.server, {.priority = "DEBUG"});
    Client client(server.port());
    fs::remove(server.logFile());
    fs::remove_all(server.home());
    fs::remove_all(server.work());
    for (const char* command :
         {"currentDir", "tempDir", "userDir", "userDir\ndesktop", "userName", "listDir\n.",
          "regQueryValue\nHKEY_USERS\na\nb", "write\nx\ny", "makeDir\nd", "readText\nx",
          "copy\na\nb", "delete\nx", "getScreenRect"}) {
        const std::string reply = client.ask(command);
        expect(reply.find(" Result=\"") != std::string::npos, "every request is answered");
    }
    const std::string full = client.ask("write\n/dev/full\ntext");
    expect(full.find("FAILED") != std::string::npos, "a full disk is told");
    std::printf("log, working directory and home removed, disk full: 14 requests answered");
    server.stop();
}

}  // namespace soak
