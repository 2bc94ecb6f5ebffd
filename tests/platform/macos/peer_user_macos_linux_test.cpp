// The macOS look-up of a connection's user, built here on a stand-in for sysctlbyname(3) that gives
// lists of sockets as that kernel makes them (xnu bsd/netinet/in_pcblist.c).
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/file_desc.h"
#include "platform/peer_user.h"

namespace {

// What the kernel would show, and by how much it grows between two questions.
struct Kernel {
    std::string list;
    std::size_t growth = 0;
    int error = 0;
};
Kernel kernel;

}  // namespace

int sysctlbyname(const char* name, void* old, std::size_t* size, void* /*fresh*/,
                 std::size_t /*freshSize*/) {
    if (kernel.error != 0 || std::strcmp(name, "net.inet.tcp.pcblist_n") != 0) {
        errno = kernel.error == 0 ? ENOENT : kernel.error;
        return -1;
    }
    const std::size_t room = *size;
    *size = kernel.list.size();
    if (old == nullptr) {
        kernel.list.append(std::exchange(kernel.growth, 0), '\0');
        return 0;
    }
    if (room < kernel.list.size()) {
        errno = ENOMEM;
        return -1;
    }
    std::memcpy(old, kernel.list.data(), kernel.list.size());
    return 0;
}

namespace corvane {
namespace {

constexpr int established = 4;
constexpr int closeWait = 5;
constexpr int finWait2 = 9;
constexpr uid_t kiosk = 501;

class Record {
  public:
    Record(std::size_t size, std::uint32_t kind) : bytes_(size, '\0') {
        put(0, static_cast<std::uint32_t>(size));
        put(4, kind);
    }
    template <typename Number>
    Record& put(std::size_t at, Number number) {
        std::memcpy(bytes_.data() + at, &number, sizeof number);
        return *this;
    }
    /// With the bytes that fill it up to a multiple of 8.
    std::string text() const { return bytes_ + std::string((8 - bytes_.size() % 8) % 8, '\0'); }

  private:
    std::string bytes_;
};

std::string head() { return Record(24, 0).text(); }

std::string socketOf(uid_t user, const sockaddr_in& local, const sockaddr_in& foreign, int state,
                     std::uint64_t socket = 0xabcdef) {
    Record addresses(104, 0x010);
    addresses.put(16, foreign.sin_port).put(18, local.sin_port);
    addresses.put(60, foreign.sin_addr.s_addr).put(76, local.sin_addr.s_addr);
    return addresses.text() + Record(108, 0x001).put(8, socket).put(64, user).text() +
           Record(32, 0x002).text() + Record(32, 0x004).text() + Record(140, 0x008).text() +
           Record(204, 0x020).put(36, state).text();
}

class MacPeerUser : public testing::Test {
  protected:
    MacPeerUser() {
        kernel = {};
        ::bind(listener, reinterpret_cast<sockaddr*>(&here), sizeof here);
        ::listen(listener, 1);
        here = own(listener);
        ::connect(client, reinterpret_cast<sockaddr*>(&here), sizeof here);
        server = FileDesc(::accept(listener, nullptr, nullptr));
        there = own(client);
        serversOwn = socketOf(0, here, there, established);
    }
    static sockaddr_in own(int sock) {
        sockaddr_in where{};
        socklen_t length = sizeof where;
        EXPECT_EQ(::getsockname(sock, reinterpret_cast<sockaddr*>(&where), &length), 0);
        return where;
    }
    std::optional<uid_t> foundIn(const std::string& sockets) const {
        kernel.list = head() + sockets + head();
        return platform::peerUser(channel, server);
    }

    sockaddr_in here{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    sockaddr_in there{};
    FileDesc listener{::socket(AF_INET, SOCK_STREAM, 0)};
    FileDesc client{::socket(AF_INET, SOCK_STREAM, 0)};
    FileDesc server;
    FileDesc channel = platform::openPeerUsers();
    std::string serversOwn;
};

TEST_F(MacPeerUser, IsThatOfTheSocketWithTheAddressesTurnedRound) {
    sockaddr_in another = there;
    another.sin_port = static_cast<in_port_t>(there.sin_port + 1);
    sockaddr_in elsewhere = there;
    elsewhere.sin_addr.s_addr = htonl(INADDR_LOOPBACK + 1);
    const std::string others = serversOwn + socketOf(1, another, here, established) +
                               socketOf(2, elsewhere, here, established);
    EXPECT_EQ(foundIn(others + socketOf(kiosk, there, here, established)), kiosk);
    EXPECT_EQ(foundIn(socketOf(kiosk, there, here, finWait2) + others), kiosk);
    EXPECT_EQ(foundIn(others), std::nullopt);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(MacPeerUser, IsNotThatOfAnOlderConnectionWithTheSameAddresses) {
    const std::string older = socketOf(1, there, here, closeWait);
    EXPECT_EQ(foundIn(older), std::nullopt);
    EXPECT_EQ(foundIn(older + socketOf(kiosk, there, here, established)), kiosk);
}

TEST_F(MacPeerUser, IsUnknownWithoutASocket) {
    EXPECT_EQ(foundIn(socketOf(0, there, here, established, 0)), std::nullopt);
}

TEST_F(MacPeerUser, IsUnknownAfterAReset) {
    const linger none{1, 0};
    ::setsockopt(client, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    client.close();
    EXPECT_EQ(foundIn(socketOf(kiosk, there, here, established)), std::nullopt);
    EXPECT_EQ(errno, ENOTCONN);
}

TEST_F(MacPeerUser, IsFoundInAListThatHasGrown) {
    kernel.growth = 64;
    EXPECT_EQ(foundIn(socketOf(kiosk, there, here, established)), kiosk);
}

TEST_F(MacPeerUser, IsUnknownWithoutAList) {
    kernel.error = EPERM;
    EXPECT_EQ(foundIn(""), std::nullopt);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(MacPeerUser, IsNotReadBeyondAListThatIsCutAnywhere) {
    const std::string whole = head() + socketOf(kiosk, there, here, established);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        kernel.list = whole.substr(0, length);
        kernel.list.shrink_to_fit();
        const std::optional<uid_t> user = platform::peerUser(channel, server);
        EXPECT_TRUE(user == std::nullopt || user == kiosk) << length;
    }
    for (std::size_t at = 0; at < whole.size(); at += 4) {  // and whatever a length is
        for (const std::uint32_t length : {0U, 1U, 7U, 0xffffffffU}) {
            kernel.list = whole;
            std::memcpy(kernel.list.data() + at, &length, sizeof length);
            static_cast<void>(platform::peerUser(channel, server));
        }
    }
}

TEST(MacPeerUserName, IsThatOfTheSystem) { EXPECT_EQ(platform::userName(0), "root"); }

}  // namespace
}  // namespace corvane
