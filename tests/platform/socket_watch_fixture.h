// Connections over loopback whose both ends the test holds, watched with the system's event queue
// and without it.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <set>
#include <stdexcept>
#include <vector>

#include "platform/file_desc.h"
#include "platform/socket_watch.h"
#include "platform/system.h"
#include "support/client_socket.h"
#include "support/wait_until.h"

namespace corvane::test {

using Sockets = std::set<int>;

inline bool isReadable(int sock) {
    pollfd state{sock, POLLIN, 0};
    return ::poll(&state, 1, 0) == 1;
}
inline bool willBeReadable(int sock) {
    return waitUntil([sock] { return isReadable(sock); });
}

class SocketWatchFixture : public testing::TestWithParam<bool> {
  protected:
    SocketWatchFixture() : listener(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(listener, generic, size) != 0 || ::listen(listener, 128) != 0 ||
            ::getsockname(listener, generic, &size) != 0) {
            throw std::runtime_error("no listener");
        }
        port = ntohs(address.sin_port);
        if (GetParam()) {
            sockets.open();
        }
    }

    /// Accepts a connection that was made; it is not watched yet.
    int accept() {
        sockaddr_in peer{};
        ends.emplace_back(platform::acceptConnection(listener, peer));
        return ends.back();
    }
    /// Both ends are new; returns the server's, which is watched.
    int connect() {
        clients.emplace_back(port);
        const int sock = accept();
        sockets.watch(sock);
        return sock;
    }
    ClientSocket& client() { return clients.back(); }

    /// Waits, and takes note of what is listed. Returns what wait() returns.
    int wait(const Deadline& deadline) {
        const int count = sockets.wait(deadline);
        const int error = errno;
        for (const auto [sock, rearmIt] : sockets.events()) {
            readable.insert(sock);
            if (rearmIt) {
                needRearm.insert(sock);
            }
        }
        errno = error;
        return count;
    }
    /// All that have been listed and not been drained since.
    Sockets found() {
        EXPECT_NE(wait(std::chrono::steady_clock::now()), -1);
        return readable;
    }

    /// To be called before the socket is closed.
    void forget(int sock) {
        sockets.forget(sock);
        readable.erase(sock);
        needRearm.erase(sock);
    }

    /// Receives up to `size` bytes as the server does; returns what recv returned.
    ssize_t receive(int sock, std::size_t size = 100) {
        std::array<char, 100> block{};
        const ssize_t count = ::recv(sock, block.data(), size, MSG_DONTWAIT);
        if ((count > 0 && static_cast<std::size_t>(count) < size) ||
            (count == -1 && errno == EAGAIN)) {
            readable.erase(sock);
            if (needRearm.erase(sock) != 0) {
                sockets.rearm(sock);
            }
        }
        return count;
    }

    FileDesc listener;
    int port = 0;
    std::vector<ClientSocket> clients;
    std::vector<FileDesc> ends;
    Sockets readable;
    Sockets needRearm;
    SocketWatch sockets;
};

}  // namespace corvane::test
