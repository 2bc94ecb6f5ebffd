// A queue that watches the server's ends of connections, with SIGALRM held, for the tests of the
// system's event queue.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <optional>
#include <vector>

#include "platform/event_queue.h"
#include "platform/file_desc.h"
#include "support/client_socket.h"
#include "support/signal_action.h"
#include "support/wait_until.h"

namespace corvane {

using Sockets = std::vector<int>;

inline bool isReady(int sock, short events = POLLIN) {
    pollfd state{sock, events, 0};
    return ::poll(&state, 1, 0) == 1;
}
inline bool willBeReady(int sock, short events = POLLIN) {
    return test::waitUntil([=] { return isReady(sock, events); });
}

class EventQueueTest : public testing::Test {
  protected:
    EventQueueTest() : listener(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(listener, generic, length), 0);
        EXPECT_EQ(::listen(listener, 128), 0);
        EXPECT_EQ(::getsockname(listener, generic, &length), 0);
        port = ntohs(address.sin_port);
        sigemptyset(&held);
        sigaddset(&held, SIGALRM);
        ::sigprocmask(SIG_BLOCK, &held, &maskBefore);
    }
    ~EventQueueTest() override {
        takeSignal();
        ::sigprocmask(SIG_SETMASK, &maskBefore, nullptr);
    }

    /// Connects a client; the result is the server's end, which is not watched yet.
    FileDesc accept() {
        clients.emplace_back(port);
        FileDesc sock(::accept(listener, nullptr, nullptr));
        ::fcntl(sock, F_SETFL, O_NONBLOCK);
        return sock;
    }
    FileDesc watched() {
        FileDesc sock = accept();
        EXPECT_TRUE(queue.watch(sock));
        return sock;
    }

    static ssize_t receive(int sock, std::size_t size = 100) {
        std::array<char, 100> block{};
        return ::recv(sock, block.data(), size, 0);
    }

    /// What is listed without waiting.
    Sockets listed() {
        EXPECT_NE(queue.wait(std::chrono::milliseconds(0), events), -1);
        return sockets();
    }
    /// What the last wait has listed.
    Sockets sockets() const {
        Sockets result;
        for (const platform::SocketEvent& event : events) {
            result.push_back(event.sock);
        }
        return result;
    }

    /// Sends the process SIGALRM in a moment, however busy it is with waiting.
    static void sendSignalSoon() {
        const itimerval soon{{}, {0, 50'000}};
        ASSERT_EQ(::setitimer(ITIMER_REAL, &soon, nullptr), 0);
    }
    bool isSignalPending() const {
        sigset_t pending;
        ::sigpending(&pending);
        return sigismember(&pending, SIGALRM) == 1;
    }
    void takeSignal() const {
        const test::SignalAction ignored(SIGALRM, SIG_IGN);  // discards one that is pending
    }

    FileDesc listener;
    int port = 0;
    sigset_t held{};
    sigset_t maskBefore{};
    std::vector<test::ClientSocket> clients;
    platform::EventQueue queue;
    std::vector<platform::SocketEvent> events;
};

class OpenEventQueueTest : public EventQueueTest {
  protected:
    OpenEventQueueTest() { queue.open(held); }
};

}  // namespace corvane
