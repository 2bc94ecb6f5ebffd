#include "server/socket_exception.h"

#include <arpa/inet.h>

#include <cerrno>

#include "server/server_fixture.h"

namespace corvane {
namespace {

class SocketExceptionTest : public ServerFixture {};

TEST_F(SocketExceptionTest, NamesThePeerOfAConnectionThatWasClosed) {
    const test::ClientSocket client = connect();
    const SocketClosedException closed(accepted(), true);
    EXPECT_EQ(closed.message, "Socket " + client.address() + " was closed gracefully (0)");
    EXPECT_EQ(closed.code, 0);
    EXPECT_EQ(closed.socket, accepted());
    EXPECT_TRUE(closed.graceful);
}

TEST_F(SocketExceptionTest, ShowsTheSameCodeForAResetOnEverySystem) {
    const test::ClientSocket client = connect();
    const SocketClosedException reset(accepted(), false);
    EXPECT_EQ(reset.message, "Socket " + client.address() + " was closed by reset (54)");
    EXPECT_EQ(reset.code, 54);
    EXPECT_FALSE(reset.graceful);
}

TEST_F(SocketExceptionTest, NamesThePeerThatTheSystemHasForgotten) {
    test::ClientSocket client = connect();
    const std::string where = client.address();
    client.reset();
    const SocketClosedException reset(*server.clients.find(accepted()), false);
    EXPECT_EQ(reset.message, "Socket " + where + " was closed by reset (54)");
}

TEST(BindException, NamesTheAddress) {
    in_addr ip{};
    ip.s_addr = htonl(0x7F000001);
    const BindException exception(ip, 54321, 98);
    EXPECT_STREQ(exception.what(), "Bind error to 127.0.0.1:54321 (98)");
    EXPECT_EQ(exception.ip.s_addr, ip.s_addr);
    EXPECT_EQ(exception.port, 54321);
    EXPECT_EQ(exception.code, 98);
}

TEST(SocketException, IsAFailureOfInputOrOutput) {
    try {
        throw SocketException("recv() error", 9);
    } catch (const IOException& e) {
        EXPECT_EQ(e.message, "recv() error (9)");
        EXPECT_EQ(e.code, 9);
    }
}

TEST(CheckRecvStatus, AcceptsBytes) { EXPECT_NO_THROW(checkRecvStatus(-1, 1)); }

TEST(CheckRecvStatus, TellsTheKindsOfFailureApart) {
    EXPECT_THROW(checkRecvStatus(-1, 0), SocketClosedException);
    errno = ECONNRESET;
    EXPECT_THROW(checkRecvStatus(-1, -1), SocketClosedException);
    errno = ENOTCONN;
    try {
        checkRecvStatus(-1, -1);
        FAIL();
    } catch (const SocketClosedException&) {
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.code, ENOTCONN);
    }
}

TEST(CheckSendError, TellsTheKindsOfFailureApart) {
    EXPECT_NO_THROW(checkSendError(-1, 0));
    EXPECT_NO_THROW(checkSendError(-1, 5));
    errno = ECONNRESET;
    EXPECT_THROW(checkSendError(-1, -1), SocketClosedException);
    errno = EPIPE;
    try {
        checkSendError(-1, -1);
        FAIL();
    } catch (const SocketClosedException&) {
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.message, "send() error (" + std::to_string(EPIPE) + ")");
    }
}

}  // namespace
}  // namespace corvane
