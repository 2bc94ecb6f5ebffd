// A server in the test's own process, with connections whose both ends the test holds. Nothing runs
// beside the test: it calls the server's functions one by one.
#pragma once

#include <gtest/gtest.h>

#include <istream>
#include <string>
#include <utility>
#include <vector>

#include "server/address.h"
#include "server/server.h"
#include "support/client_socket.h"
#include "support/log_capture.h"

namespace corvane {

/// Remembers the commands that it gets, answers "NAME!" and fails on demand.
class TestServer : public Server {
  public:
    void processClientCommand(int sock, const std::string& cmd, std::istream& params) override {
        commands.push_back(cmd);
        parameters.clear();
        for (std::string line = getline(params); !params.fail(); line = getline(params)) {
            parameters.push_back(line);
        }
        if (onCommand != nullptr) {
            onCommand(sock);
        }
        const std::string reply = cmd + "!";
        sendResponse(sock, reply.data(), static_cast<int>(reply.size()));
    }

    std::vector<std::string> commands;
    /// Of the last command.
    std::vector<std::string> parameters;
    void (*onCommand)(int sock) = nullptr;
};

class ServerFixture : public testing::Test {
  protected:
    ServerFixture() {
        server.initListener("127.0.0.1", 0);
        const std::string where = server.listeners.front().address;
        port = std::stoi(where.substr(where.find(':') + 1));
    }

    /// Connects a client; the server's end is the last of server.clients then.
    test::ClientSocket connect(int receiveBuffer = 0) {
        test::ClientSocket client(port, receiveBuffer);
        const std::size_t before = server.clients.size();
        while (server.clients.size() == before) {
            server.processListener(server.listeners.front().sock);
        }
        return client;
    }

    /// The server's end of the connection that was made last.
    int accepted() const { return server.clients.descriptors().back(); }

    TestServer server;
    int port = 0;
};

}  // namespace corvane
