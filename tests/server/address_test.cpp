#include "server/address.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include "server/server_fixture.h"

namespace corvane {
namespace {

class AddressTest : public ServerFixture {};

TEST(FormatAddress, WritesTheOctetsInNetworkOrder) {
    in_addr ip{};
    ip.s_addr = htonl(0x7F000001);
    EXPECT_EQ(formatAddress(ip, 10067), "127.0.0.1:10067");
    ip.s_addr = htonl(0xFFFEFDFC);
    EXPECT_EQ(formatAddress(ip, -1), "255.254.253.252:-1");
}

TEST(FormatAddress, TakesThePortOfASocketAddressFromNetworkOrder) {
    sockaddr_in address{};
    address.sin_addr.s_addr = htonl(0x0A000002);
    address.sin_port = htons(51000);
    EXPECT_EQ(formatAddress(address), "10.0.0.2:51000");
}

TEST(FormatAddress, OfADescriptorThatIsNotOpenIsUnknown) {
    EXPECT_EQ(formatAddress(-1), "?.?.?.?:?");
}

TEST(FormatAddress, OfASocketOfAnotherFamilyIsUnknown) {
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    EXPECT_EQ(formatAddress(pair[0]), "?.?.?.?:?");
    ::close(pair[0]);
    ::close(pair[1]);
}

TEST_F(AddressTest, OfAListenerIsItsOwn) {
    EXPECT_EQ(formatAddress(server.listeners.front().sock), "127.0.0.1:" + std::to_string(port));
}

TEST_F(AddressTest, OfAConnectionIsThePeers) {
    const test::ClientSocket client = connect();
    EXPECT_EQ(formatAddress(accepted()), client.address());
    EXPECT_EQ(server.addressOf(accepted()), client.address());
}

TEST_F(AddressTest, IsKeptWhenThePeerHasResetTheConnection) {
    test::ClientSocket client = connect();
    const std::string where = client.address();
    client.reset();
    EXPECT_EQ(server.addressOf(accepted()), where);
}

TEST_F(AddressTest, IsForgottenWhenTheConnectionIsClosed) {
    const test::ClientSocket client = connect();
    const int sock = accepted();
    server.closeSocket(sock, false);
    EXPECT_EQ(formatAddress(sock), "?.?.?.?:?");
    EXPECT_EQ(server.addressOf(sock), "?.?.?.?:?");
}

}  // namespace
}  // namespace corvane
