#include "server/connection.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string>

#include "server/socket_exception.h"

namespace corvane {
namespace {

using Input = Connection::Input;

constexpr std::size_t blockSize = std::size_t{32} * 1024;

class ConnectionTest : public testing::Test {
  protected:
    ConnectionTest() {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair_.data()), 0);
        client = FileDesc(pair_[1]);
        sockaddr_in peer{};
        peer.sin_family = AF_INET;
        peer.sin_port = htons(4567);
        ::inet_pton(AF_INET, "10.1.2.3", &peer.sin_addr);
        connection = std::make_unique<Connection>(FileDesc(pair_[0]), peer, 0);
    }

    void send(const std::string& bytes) {
        ASSERT_EQ(::send(client, bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
    }

    FileDesc client;
    std::unique_ptr<Connection> connection;
    ByteBuffer shared;

  private:
    std::array<int, 2> pair_{};
};

TEST_F(ConnectionTest, HasTheAddressOfItsPeerUntilItIsClosed) {
    const int sock = connection->sock();
    const std::string& address = connection->address();
    EXPECT_EQ(address, "10.1.2.3:4567");
    EXPECT_EQ(connection->descriptor(), sock);
    EXPECT_EQ(connection->close(), 0);
    EXPECT_EQ(address, "?.?.?.?:?");
    EXPECT_EQ(connection->descriptor(), -1);
    EXPECT_EQ(connection->sock(), sock);
}

TEST_F(ConnectionTest, OfAnUnknownPeerShowsSo) {
    EXPECT_EQ(Connection(FileDesc(), {}, 0).address(), "?.?.?.?:?");
}

TEST_F(ConnectionTest, ReceivesBehindWhatIsUnread) {
    EXPECT_EQ(connection->receive(), Input::Nothing);
    send("one");
    EXPECT_EQ(connection->receive(), Input::Bytes);
    connection->consume(1);
    send("two");
    EXPECT_EQ(connection->receive(), Input::Bytes);
    EXPECT_EQ(connection->unread(), "netwo");
    connection->consume(5);
    EXPECT_EQ(connection->unread(), "");
    client.close();
    EXPECT_EQ(connection->receive(), Input::End);
}

TEST_F(ConnectionTest, IsDrainedWhenLessArrivedThanThereWasRoomFor) {
    connection->arrived(false);
    EXPECT_FALSE(connection->isDrained());
    send(std::string(blockSize, 'x'));
    EXPECT_EQ(connection->receive(), Input::Bytes);
    EXPECT_FALSE(connection->isDrained());
    EXPECT_EQ(connection->receive(), Input::Nothing);
    EXPECT_TRUE(connection->isDrained());
    connection->arrived(false);
    send("x");
    EXPECT_EQ(connection->receive(), Input::Bytes);
    EXPECT_TRUE(connection->isDrained());
}

TEST_F(ConnectionTest, TellsOnceThatItHasToBeReArmed) {
    EXPECT_FALSE(connection->takeNeedsRearm());
    connection->arrived(true);
    connection->arrived(false);
    EXPECT_TRUE(connection->takeNeedsRearm());
    EXPECT_FALSE(connection->takeNeedsRearm());
}

TEST_F(ConnectionTest, BorrowsMemoryAndKeepsOnlyWhatItNeeds) {
    shared.room(blockSize);
    const std::size_t lent = shared.capacity();
    connection->borrow(shared);
    EXPECT_EQ(shared.capacity(), 0U);
    send("request and rest");
    EXPECT_EQ(connection->receive(), Input::Bytes);
    connection->consume(12);
    connection->putBack(shared);
    EXPECT_GE(shared.capacity(), lent);
    EXPECT_EQ(shared.size(), 0U);
    EXPECT_EQ(connection->unread(), "rest");

    connection->borrow(shared);
    EXPECT_GE(shared.capacity(), lent) << "unread bytes stay where they are";
    connection->consume(4);
    connection->putBack(shared);
    EXPECT_EQ(connection->unread(), "");
    EXPECT_GE(shared.capacity(), lent);
}

TEST_F(ConnectionTest, KeepsViewsOfItsInputValidWhenItIsClosed) {
    send("request");
    EXPECT_EQ(connection->receive(), Input::Bytes);
    const std::string_view request = connection->unread();
    connection->consume(request.size());
    connection->close();
    EXPECT_EQ(request, "request");
}

TEST_F(ConnectionTest, CannotReceiveWhenItIsClosed) {
    connection->close();
    try {
        connection->receive();
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.code, EBADF);
    }
}

TEST_F(ConnectionTest, ForgetsItsInput) {
    send("bytes");
    EXPECT_EQ(connection->receive(), Input::Bytes);
    connection->dropInput();
    EXPECT_EQ(connection->unread(), "");
}

}  // namespace
}  // namespace corvane
