// Which connections are half-closed before they are closed: their clients get all that was sent,
// also where bytes of theirs are left unread. Linux only: it takes the place of shutdown(2).
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "server/server_fixture.h"

namespace {

std::vector<int> halfClosed;
bool isRecording = false;

}  // namespace

// Takes the place of the C library's function in this program.
extern "C" int shutdown(int sock, int how) noexcept {
    if (isRecording && how == SHUT_WR) {
        halfClosed.push_back(sock);
    }
    return static_cast<int>(::syscall(SYS_shutdown, sock, how));
}

namespace corvane {
namespace {

class HalfClose : public ServerFixture {
  protected:
    HalfClose() {
        halfClosed.clear();
        isRecording = true;
    }
    ~HalfClose() override { isRecording = false; }
};

TEST_F(HalfClose, ComesBeforeAGracefulCloseOnly) {
    const test::ClientSocket first = connect();
    server.closeSocket(accepted(), false);
    EXPECT_TRUE(halfClosed.empty());
    const test::ClientSocket second = connect();
    const int sock = accepted();
    server.closeSocket(sock, true);
    EXPECT_EQ(halfClosed, std::vector<int>{sock});
}

TEST_F(HalfClose, ComesBeforeAllClientsAreClosed) {
    const test::ClientSocket first = connect();
    const test::ClientSocket second = connect();
    const std::vector<int> all = server.clients.descriptors();
    server.deinitServer();
    EXPECT_EQ(halfClosed, all);
}

TEST_F(HalfClose, ComesBeforeARefusedClientIsClosed) {
    test::ClientSocket page = connect();
    const int sock = accepted();
    page.send("GET / HTTP/1.1\r\n");
    EXPECT_TRUE(server.processClient(sock));
    EXPECT_EQ(halfClosed, std::vector<int>{sock});
}

}  // namespace
}  // namespace corvane
