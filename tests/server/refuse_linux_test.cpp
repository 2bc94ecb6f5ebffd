// Refusing what no application has sent, when the client makes it hard. Linux only: it takes the
// place of recv(2).
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include "server/server_fixture.h"
#include "server/socket_exception.h"

namespace {

/// The socket that always has more to receive, up to a number of calls, and how many there were.
int endlessSock = -1;
int endlessCalls = 0;
constexpr int mostCalls = 10'000;

}  // namespace

// Takes the place of the C library's function in this program.
extern "C" ssize_t recv(int sock, void* room, std::size_t size, int flags) {
    const ssize_t count = ::syscall(SYS_recvfrom, sock, room, size, flags, nullptr, nullptr);
    if (sock == -1 || sock != endlessSock || count != -1 || ++endlessCalls > mostCalls) {
        return count;
    }
    std::memset(room, 'x', size);
    return static_cast<ssize_t>(size);
}

namespace corvane {
namespace {

class RefusedClient : public ServerFixture {};

TEST_F(RefusedClient, DoesNotHoldTheServerUpBySendingWithoutEnd) {
    test::ClientSocket page = connect();
    page.send("GET / HTTP/1.1\r\n");
    endlessSock = accepted();
    EXPECT_TRUE(server.processClient(endlessSock));
    endlessSock = -1;
    EXPECT_LT(endlessCalls, mostCalls);
    EXPECT_TRUE(server.clients.empty());
}

class MuteServer : public TestServer {
  public:
    void sendFatalError(int /*sock*/, const std::string& /*cmd*/) override { fail(); }

    void (*fail)() = nullptr;
};

TEST(RefusedClientOfAMuteServer, IsClosedWithoutHarmHoweverItsAnswerFails) {
    MuteServer server;
    server.initListener("127.0.0.1", 0);
    const std::string where = server.listeners.front().address;
    for (auto* const fail :
         {+[] { throw SocketException("send() error", EPIPE); }, +[] { throw std::bad_alloc(); }}) {
        server.fail = fail;
        test::ClientSocket page(std::stoi(where.substr(where.find(':') + 1)));
        page.send("GET / HTTP/1.1\r\n");
        while (server.clients.empty()) {
            server.processListener(server.listeners.front().sock);
        }
        EXPECT_TRUE(server.processClient(server.clients.first()->sock()));
        EXPECT_TRUE(server.clients.empty());
        EXPECT_TRUE(page.isEnded());
    }
}

}  // namespace
}  // namespace corvane
