#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "platform/file_desc.h"
#include "platform/port_users.h"
#include "support/scratch_directory.h"
#include "text/strings.h"

namespace corvane {
namespace {

using platform::PortUser;
using platform::portUsers;

// A listener and a client's connection to it.
struct Sockets {
    Sockets() {
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(listener, reinterpret_cast<sockaddr*>(&place), sizeof place);
        ::listen(listener, 4);
        port = portOf(listener);
        place.sin_port = htons(static_cast<in_port_t>(port));
        ::connect(client, reinterpret_cast<sockaddr*>(&place), sizeof place);
        server = FileDesc(::accept(listener, nullptr, nullptr));
    }
    static int portOf(int sock) {
        sockaddr_in own{};
        socklen_t size = sizeof own;
        ::getsockname(sock, reinterpret_cast<sockaddr*>(&own), &size);
        return ntohs(own.sin_port);
    }

    sockaddr_in place{};
    FileDesc listener{::socket(AF_INET, SOCK_STREAM, 0)};
    FileDesc client{::socket(AF_INET, SOCK_STREAM, 0)};
    FileDesc server;
    int port = 0;
};

TEST(PortUsers, AreTheListenerAndItsConnectionsWithTheirProcess) {
    const Sockets sockets;
    std::vector<PortUser> users = portUsers(sockets.port);
    ASSERT_EQ(users.size(), 2U);
    std::sort(users.begin(), users.end(),
              [](const PortUser& a, const PortUser& b) { return a.state < b.state; });
    EXPECT_EQ(users[0].state, PortUser::State::Listening);
    EXPECT_EQ(users[0].local, format("127.0.0.1:%d", sockets.port));
    EXPECT_EQ(users[1].state, PortUser::State::Connected);
    EXPECT_EQ(users[1].remotePort, Sockets::portOf(sockets.client));
    EXPECT_EQ(users[1].remote, format("127.0.0.1:%d", users[1].remotePort));
    for (const PortUser& user : users) {
        EXPECT_EQ(user.process, ::getpid());
        EXPECT_EQ(user.user, ::geteuid());
    }
}

TEST(PortUsers, HaveNoProcessOnceTheyAreClosed) {
    Sockets sockets;
    sockets.server.close();
    sockets.client.close();
    sockets.listener.close();
    for (const PortUser& user : portUsers(sockets.port)) {  // what waits for late packets
        EXPECT_EQ(user.state, PortUser::State::Closed);
        EXPECT_EQ(user.process, std::nullopt);
        EXPECT_EQ(user.user, std::nullopt);
    }
}

TEST(PortUsers, IncludeAnIpv6SocketForIpv4) {
    const FileDesc listener(::socket(AF_INET6, SOCK_STREAM, 0));
    sockaddr_in6 any{};
    any.sin6_family = AF_INET6;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&any), sizeof any) != 0) {
        GTEST_SKIP() << "no IPv6 here";
    }
    ::listen(listener, 1);
    socklen_t size = sizeof any;
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&any), &size);
    const int port = ntohs(any.sin6_port);
    const std::vector<PortUser> users = portUsers(port);
    ASSERT_EQ(users.size(), 1U);
    EXPECT_EQ(users[0].local, format("[::]:%d", port));
    EXPECT_EQ(users[0].process, ::getpid());
}

TEST(ProcessInfo, TellsExecutableUserAndStart) {
    const platform::ProcessInfo own = platform::processInfo(::getpid());
    EXPECT_EQ(own.executable, std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_TRUE(endsWith(own.executable, own.startedAs.substr(own.startedAs.rfind('/'))));
    EXPECT_EQ(own.user, ::geteuid());
    const std::time_t now = std::time(nullptr);
    ASSERT_TRUE(own.startedAt.has_value());
    EXPECT_LE(*own.startedAt, now + 2);
    EXPECT_GT(*own.startedAt, now - 3600);
}

TEST(ProcessInfo, IsEmptyWithoutAProcess) {
    const platform::ProcessInfo none = platform::processInfo(-1);
    EXPECT_EQ(none.executable, "");
    EXPECT_EQ(none.user, std::nullopt);
    EXPECT_EQ(none.startedAt, std::nullopt);
    EXPECT_EQ(platform::filesWrittenBy(-1), std::nullopt);
}

TEST(FilesWrittenBy, AreThoseThatAreOpenForWriting) {
    const test::ScratchDirectory scratch;
    const std::string path = std::filesystem::canonical(scratch.path()) / "written";
    const std::ofstream written(path);
    const std::ifstream read(scratch.file("read"));
    const auto files = platform::filesWrittenBy(::getpid());
    ASSERT_TRUE(files.has_value());
    EXPECT_EQ(std::count(files->begin(), files->end(), path), 1);
    EXPECT_TRUE(std::none_of(files->begin(), files->end(),
                             [](const std::string& file) { return endsWith(file, "/read"); }));
}

}  // namespace
}  // namespace corvane
