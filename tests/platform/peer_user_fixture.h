// A connection whose client's user is asked for, for the tests of that on Linux.
#pragma once

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <optional>

#include "platform/file_desc.h"
#include "platform/peer_user.h"

namespace corvane {

class PeerUser : public testing::Test {
  protected:
    PeerUser() {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener, 4), 0);
        address = own(listener);
    }
    static sockaddr_in own(int sock) {
        sockaddr_in where{};
        socklen_t length = sizeof where;
        EXPECT_EQ(::getsockname(sock, reinterpret_cast<sockaddr*>(&where), &length), 0);
        return where;
    }
    void connect() {
        client = FileDesc(::socket(AF_INET, SOCK_STREAM, 0));
        EXPECT_EQ(::connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        accept();
    }
    void accept() { server = FileDesc(::accept(listener, nullptr, nullptr)); }
    std::optional<uid_t> found() const { return platform::peerUser(channel, server); }
    /// Takes the client away without a word to the server. Returns false where that is not allowed.
    bool forgetClient() {
        const int on = 1;
        return ::setsockopt(client, IPPROTO_TCP, TCP_REPAIR, &on, sizeof on) == 0 &&
               client.close() == 0;
    }

    FileDesc listener{::socket(AF_INET, SOCK_STREAM, 0)};
    FileDesc client;
    FileDesc server;
    FileDesc channel = platform::openPeerUsers();
    sockaddr_in address{};
};

}  // namespace corvane
