#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>

#include "platform/file_desc.h"
#include "platform/peer_user.h"
#include "support/as_user.h"

namespace corvane {
namespace {

using test::AsUser;

constexpr uid_t other = 4321;

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

TEST_F(PeerUser, IsTheOneWhoMadeTheClientsSocket) {
    connect();
    EXPECT_EQ(found(), ::geteuid());
    if (!AsUser::isPossible()) {
        GTEST_SKIP() << "only the superuser can be several users";
    }
    {
        const AsUser maker(other);
        connect();
    }
    EXPECT_EQ(found(), other);
}

TEST_F(PeerUser, IsKnownOfAClientThatHasSentItsLastByte) {
    connect();
    EXPECT_EQ(::shutdown(client, SHUT_WR), 0);
    EXPECT_EQ(found(), ::geteuid());
}

TEST_F(PeerUser, IsKnownOfAnIpv6SocketWithAMappedAddress) {
    sockaddr_in6 mapped{};
    mapped.sin6_family = AF_INET6;
    mapped.sin6_port = address.sin_port;
    ::inet_pton(AF_INET6, "::ffff:127.0.0.1", &mapped.sin6_addr);
    client = FileDesc(::socket(AF_INET6, SOCK_STREAM, 0));
    if (::connect(client, reinterpret_cast<sockaddr*>(&mapped), sizeof mapped) != 0) {
        GTEST_SKIP() << "no IPv6 here";
    }
    accept();
    EXPECT_EQ(found(), ::geteuid());
}

TEST_F(PeerUser, IsUnknownAfterAReset) {
    connect();
    const linger none{1, 0};
    ::setsockopt(client, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    client.close();
    EXPECT_EQ(found(), std::nullopt);
    EXPECT_EQ(errno, ENOTCONN);
}

TEST_F(PeerUser, IsUnknownWithoutAChannel) {
    connect();
    EXPECT_EQ(platform::peerUser(-1, server), std::nullopt);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(PeerUser, IsUnknownOfAClientThatIsNotHere) {
    connect();
    if (!forgetClient()) {
        GTEST_SKIP() << "only the superuser can take a socket away without a word";
    }
    EXPECT_EQ(found(), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(PeerUser, IsNotTheOneWhoListensOnTheClientsPort) {
    connect();
    sockaddr_in port = own(client);
    if (!forgetClient()) {
        GTEST_SKIP() << "only the superuser can take a socket away without a word";
    }
    const FileDesc another(::socket(AF_INET, SOCK_STREAM, 0));
    if (::bind(another, reinterpret_cast<sockaddr*>(&port), sizeof port) != 0) {
        ASSERT_EQ(errno, EADDRINUSE);
        GTEST_SKIP() << "another program has got the port meanwhile";
    }
    ASSERT_EQ(::listen(another, 1), 0);
    EXPECT_EQ(found(), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(PeerUser, IsNotTheOneBeforeWhoseAnswerNobodyTook) {
    connect();
    const std::array<int, 4> unknownMessage{sizeof unknownMessage, 0x00010000 | 0xff, 0, 0};
    ASSERT_NE(::send(channel, unknownMessage.data(), sizeof unknownMessage, 0), -1);
    EXPECT_EQ(found(), ::geteuid());
}

TEST_F(PeerUser, IsUnknownOutsideOfAUserNamespace) {
    connect();
    const pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWUSER) != 0) {
            ::_exit(EPERM);
        }
        channel = platform::openPeerUsers();
        ::_exit(found() ? 0 : errno);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WEXITSTATUS(status) == EPERM) {
        GTEST_SKIP() << "no user namespaces here";
    }
    EXPECT_EQ(WEXITSTATUS(status), EOVERFLOW);
}

TEST(PeerUserName, IsThatOfTheMachinesList) {
    EXPECT_EQ(platform::userName(0), "root");
    EXPECT_EQ(platform::userName(3'999'999'999), "");
}

}  // namespace
}  // namespace corvane
