#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>

#include "platform/file_desc.h"
#include "platform/peer_user.h"
#include "platform/peer_user_fixture.h"
#include "support/as_user.h"

namespace corvane {
namespace {

using test::AsUser;

constexpr uid_t other = 4321;

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
