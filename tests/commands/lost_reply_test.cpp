// Clients that are gone before their reply.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <string>
#include <vector>

#include "commands/corvane_server.h"
#include "server/address.h"
#include "support/client_socket.h"
#include "support/environment.h"
#include "support/log_capture.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

class LostReply : public testing::Test {
  protected:
    LostReply() { server.initListener("127.0.0.1", 0); }

    /// Sends a request, resets the connection and lets the server serve it. Returns the lines from
    /// the reply to the closing of the connection; "ADDRESS" stands for the client's.
    std::vector<std::string> served(const std::string& request) {
        const std::string where = server.listeners.front().address;
        test::ClientSocket client(std::stoi(where.substr(where.find(':') + 1)));
        while (server.clients.empty()) {
            server.processListener(server.listeners.front().sock);
        }
        const std::string address = client.address();
        client.send(request + '\0');
        client.reset();
        log.take();
        EXPECT_TRUE(server.processClient(server.clients.descriptors().front()));
        EXPECT_TRUE(server.clients.empty());
        std::vector<std::string> lines;
        for (std::string line : log.lines()) {
            for (std::size_t at = 0; (at = line.find(address)) != std::string::npos;) {
                line.replace(at, address.size(), "ADDRESS");
            }
            if (line.find("Closing socket") != std::string::npos) {
                break;
            }
            lines.push_back(line);
        }
        return lines;
    }

    CorvaneServer server;
    test::ScratchDirectory scratch;
    test::LogCapture log{log4cpp::Priority::INFO};
};

const std::string gone = "INFO corvane.server.process.client Client ADDRESS has closed connection";
const std::string loss = "Socket ADDRESS was closed by reset (54)";

TEST_F(LostReply, IsTheEndOfAConnectionAndNoFailureOfTheCommand) {
    const std::string file = scratch.file("file", "text");
    const std::vector<std::string> requests{"userName",
                                            "currentDir",
                                            "log\n\nDEBUG\nx",
                                            "makeDir\n" + scratch.path(),
                                            "write\n" + (scratch / "new") + "\ndata",
                                            "readByte\n" + file,
                                            "readText\n" + file,
                                            "listDir\n" + scratch.path(),
                                            "delete\n" + (scratch / "none"),
                                            "copy\n" + file + "\n" + (scratch / "copy"),
                                            "rename\n" + file + "\n" + (scratch / "moved"),
                                            "unsupported\n"};
    for (const std::string& request : requests) {
        std::vector<std::string> lines = served(request);
        ASSERT_FALSE(lines.empty()) << request;
        EXPECT_EQ(lines.back(), gone) << request;
        EXPECT_EQ(lines.size(), request == "unsupported\n" ? 2U : 1U) << request;
    }
}

TEST_F(LostReply, OfExecuteHasALineOfItsOwn) {
    EXPECT_EQ(served("execute\ntrue"),
              (std::vector<std::string>{"ERROR corvane.server.process.client.cmd.execute Client "
                                        "ADDRESS: cmd 'execute': ERROR: '" +
                                            loss + "'",
                                        gone}));
    EXPECT_GT(::wait(nullptr), 0);
}

TEST_F(LostReply, OfARegistryValueHasALineOfItsOwn) {
    scratch.file("home/.corvane/registry.txt", "HKEY_USERS/X:Name=value\n");
    const test::EnvironmentVariable home("HOME", scratch / "home");
    EXPECT_EQ(served("regQueryValue\nHKEY_USERS\nX\nName"),
              (std::vector<std::string>{
                  "ERROR corvane.server.process.client.cmd.regQueryValue " + loss, gone}));
}

}  // namespace
}  // namespace corvane
