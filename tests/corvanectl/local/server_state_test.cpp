#include "corvanectl/local/server_state.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ctime>

#include "platform/file_desc.h"
#include "support/scratch_directory.h"

namespace corvane::ctl {
namespace {

const std::string start = "2026-11-22 16:00:00,000 [NOTICE,corvane] start corvane v. 2.7.5.7\n";

std::int64_t startTime() {
    std::tm parts{};
    parts.tm_year = 126;
    parts.tm_mon = 10;
    parts.tm_mday = 22;
    parts.tm_hour = 16;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

TEST(VersionIn, IsThatOfTheLastStart) {
    const std::string older = "2026-11-21 16:00:00,000 [NOTICE,corvane] start corvane v. 1\n";
    EXPECT_EQ(versionIn(older + start + "more\n", startTime()), "2.7.5.7");
    EXPECT_EQ(versionIn(start, startTime()), "2.7.5.7");
}

TEST(VersionIn, IsNotThatOfAnEarlierServer) {
    EXPECT_EQ(versionIn(start, startTime() + 2), "2.7.5.7");
    EXPECT_EQ(versionIn(start, startTime() + 3), "");
}

TEST(VersionIn, IsUnknownWithoutATime) {
    EXPECT_EQ(versionIn("", 0), "");
    EXPECT_EQ(versionIn("NOTICE corvane] start corvane v. 2.7.5.7\n", 0), "");
}

TEST(ConfigurationIn, IsTheFileThatTheServerReads) {
    const test::ScratchDirectory scratch;
    EXPECT_EQ(configurationIn(scratch.path()), "");
    scratch.file("corvane.cfg");
    EXPECT_EQ(configurationIn(scratch.path()), scratch / "corvane.cfg");
    scratch.file("corvane.conf");
    EXPECT_EQ(configurationIn(scratch.path()), scratch / "corvane.conf");
    EXPECT_EQ(configurationIn(""), "");
}

struct BoundSocket {
    BoundSocket() {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(sock, reinterpret_cast<sockaddr*>(&place), sizeof place);
        socklen_t size = sizeof place;
        ::getsockname(sock, reinterpret_cast<sockaddr*>(&place), &size);
        port = ntohs(place.sin_port);
    }
    FileDesc sock{::socket(AF_INET, SOCK_STREAM, 0)};
    int port = 0;
};

TEST(ServerStateOf, IsThatOfAPortNobodyHas) {
    BoundSocket socket;
    socket.sock.close();
    const ServerState state = serverState({"", socket.port, "/nowhere/", ""});
    EXPECT_EQ(state.port, ServerState::Port::Free);
    EXPECT_FALSE(state.isRunning());
}

TEST(ServerStateOf, TellsAnotherProgramFromTheServer) {
    const BoundSocket socket;
    ASSERT_EQ(::listen(socket.sock, 1), 0);
    const ServerState state = serverState({"", socket.port, "/nowhere/", ""});
    EXPECT_EQ(state.port, ServerState::Port::Other);
    EXPECT_FALSE(state.isRunning());
    EXPECT_EQ(state.process, ::getpid());
}

}  // namespace
}  // namespace corvane::ctl
