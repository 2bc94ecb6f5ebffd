// What macOS tells about sockets and processes, built here on stand-ins for libproc(3).
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <libproc.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/port_users.h"

namespace {

using Descriptor = std::variant<socket_fdinfo, vnode_fdinfowithpath>;

struct Process {
    std::vector<Descriptor> descriptors;
    uid_t user = 501;
    std::string path;
    /// Belongs to somebody else: the kernel tells nothing.
    bool isHidden = false;
};

std::map<pid_t, Process> processes;
// One that starts while the kernel is asked.
std::optional<std::pair<pid_t, Process>> starting;

const Process* visible(pid_t process) {
    const auto found = processes.find(process);
    return found == processes.end() || found->second.isHidden ? nullptr : &found->second;
}

// As the kernel answers: the size of all without room, else what fits.
template <typename Entry>
int give(const std::vector<Entry>& entries, void* room, int size) {
    const auto all = static_cast<int>(entries.size() * sizeof(Entry));
    if (room == nullptr) {
        return all;
    }
    const int given = std::min(all, size);
    std::memcpy(room, entries.data(), static_cast<std::size_t>(given));
    return given;
}

}  // namespace

int proc_listpids(std::uint32_t type, std::uint32_t /*typeInfo*/, void* room, int size) {
    std::vector<pid_t> all;
    for (const auto& [number, process] : processes) {
        all.push_back(number);
    }
    if (starting) {
        processes.insert(*std::exchange(starting, std::nullopt));
    }
    return type == PROC_ALL_PIDS ? give(all, room, size) : -1;
}

int proc_pidinfo(int process, int flavor, std::uint64_t /*argument*/, void* room, int size) {
    const Process* const found = visible(process);
    if (found == nullptr) {
        return 0;
    }
    if (flavor == PROC_PIDTBSDINFO) {
        return give(std::vector<proc_bsdinfo>{{found->user, 1'795'367'084}}, room, size);
    }
    std::vector<proc_fdinfo> list;
    for (const Descriptor& each : found->descriptors) {
        list.push_back({static_cast<int>(list.size()), std::holds_alternative<socket_fdinfo>(each)
                                                           ? PROX_FDTYPE_SOCKET
                                                           : PROX_FDTYPE_VNODE});
    }
    return give(list, room, size);
}

int proc_pidfdinfo(int process, int fd, int flavor, void* room, int size) {
    const Descriptor& each = visible(process)->descriptors.at(static_cast<std::size_t>(fd));
    if (flavor == PROC_PIDFDSOCKETINFO) {
        return give(std::vector<socket_fdinfo>{std::get<socket_fdinfo>(each)}, room, size);
    }
    return give(std::vector<vnode_fdinfowithpath>{std::get<vnode_fdinfowithpath>(each)}, room,
                size);
}

int proc_pidpath(int process, void* room, std::uint32_t size) {
    const Process* const found = visible(process);
    if (found == nullptr || found->path.empty()) {
        return 0;
    }
    std::strncpy(static_cast<char*>(room), found->path.c_str(), size);
    return static_cast<int>(found->path.size());
}

namespace corvane {
namespace {

using platform::PortUser;

constexpr int port = 54321;
constexpr pid_t server = 70;

socket_fdinfo socketOf(int state, int localPort, int remotePort, std::uint8_t family = INI_IPV4) {
    socket_fdinfo result{};
    result.psi.soi_kind = SOCKINFO_TCP;
    tcp_sockinfo& tcp = result.psi.soi_proto.pri_tcp;
    tcp.tcpsi_state = state;
    tcp.tcpsi_ini.insi_lport = htons(static_cast<in_port_t>(localPort));
    tcp.tcpsi_ini.insi_fport = htons(static_cast<in_port_t>(remotePort));
    tcp.tcpsi_ini.insi_vflag = family;
    tcp.tcpsi_ini.insi_laddr.ina_46.i46a_addr4.s_addr = htonl(INADDR_LOOPBACK);
    if (remotePort != 0) {
        tcp.tcpsi_ini.insi_faddr.ina_46.i46a_addr4.s_addr = htonl(INADDR_LOOPBACK + 1);
    }
    return result;
}

vnode_fdinfowithpath fileOf(const std::string& path, std::uint32_t openFlags, mode_t kind) {
    vnode_fdinfowithpath result{};
    result.pfi.fi_openflags = openFlags;
    result.pvip.vip_vi.vi_stat.vst_mode = static_cast<std::uint16_t>(kind);
    path.copy(result.pvip.vip_path, sizeof result.pvip.vip_path - 1);
    return result;
}

class PortUsersOfMacos : public testing::Test {
  protected:
    ~PortUsersOfMacos() override { processes.clear(); }
};

TEST_F(PortUsersOfMacos, AreAListenerAndAConnectionWithTheirProcess) {
    processes[server].descriptors = {socketOf(TSI_S_LISTEN, port, 0),
                                     socketOf(TSI_S_ESTABLISHED, port, 40000)};
    const std::vector<PortUser> users = platform::portUsers(port);
    ASSERT_EQ(users.size(), 2U);
    EXPECT_EQ(users[0].state, PortUser::State::Listening);
    EXPECT_EQ(users[0].local, "127.0.0.1:54321");
    EXPECT_EQ(users[0].remote, "0.0.0.0:0");
    EXPECT_EQ(users[0].process, server);
    EXPECT_EQ(users[0].user, 501U);
    EXPECT_EQ(users[1].state, PortUser::State::Connected);
    EXPECT_EQ(users[1].remote, "127.0.0.2:40000");
    EXPECT_EQ(users[1].remotePort, 40000);
}

TEST_F(PortUsersOfMacos, AreNotThoseOfAnotherPortKindOrFamily) {
    socket_fdinfo datagrams = socketOf(TSI_S_LISTEN, port, 0);
    datagrams.psi.soi_kind = SOCKINFO_IN;
    processes[server].descriptors = {
        socketOf(TSI_S_LISTEN, port + 1, 0), socketOf(TSI_S_ESTABLISHED, 40000, port), datagrams,
        socketOf(TSI_S_LISTEN, port, 0, INI_IPV6), fileOf("/log", FWRITE, S_IFREG)};
    EXPECT_TRUE(platform::portUsers(port).empty());
}

TEST_F(PortUsersOfMacos, AreFoundBehindOneThatListensForBothFamilies) {
    processes[server].descriptors = {socketOf(TSI_S_LISTEN, port, 0, INI_IPV4 | INI_IPV6)};
    EXPECT_EQ(platform::portUsers(port).size(), 1U);
}

TEST_F(PortUsersOfMacos, AreOnlyThoseOfProcessesThatMayBeLookedInto) {
    processes[server].descriptors = {socketOf(TSI_S_LISTEN, port, 0)};
    processes[server].isHidden = true;
    processes[server + 1];
    EXPECT_TRUE(platform::portUsers(port).empty());
}

TEST_F(PortUsersOfMacos, AreAllFoundAmongManyProcesses) {
    constexpr int many = 300;
    for (int i = 0; i < many; ++i) {
        processes[server + i].descriptors = {socketOf(TSI_S_ESTABLISHED, port, 40000 + i)};
    }
    EXPECT_EQ(platform::portUsers(port).size(), static_cast<std::size_t>(many));
}

TEST_F(PortUsersOfMacos, AreFoundOfAProcessThatStartsMeanwhile) {
    processes[server];
    Process late;
    late.descriptors = {socketOf(TSI_S_LISTEN, port, 0)};
    starting = {server + 1, late};
    EXPECT_EQ(platform::portUsers(port).size(), 1U);
}

TEST_F(PortUsersOfMacos, TellAboutAProcess) {
    processes[server].user = 502;
    processes[server].path = "/usr/local/lib/corvane/corvane";
    const platform::ProcessInfo info = platform::processInfo(server);
    EXPECT_EQ(info.executable, "/usr/local/lib/corvane/corvane");
    EXPECT_EQ(info.startedAs, "");
    EXPECT_EQ(info.user, 502U);
    EXPECT_EQ(info.startedAt, 1'795'367'084);
}

TEST_F(PortUsersOfMacos, TellNothingAboutAProcessThatIsNotThere) {
    const platform::ProcessInfo info = platform::processInfo(server);
    EXPECT_EQ(info.executable, "");
    EXPECT_EQ(info.user, std::nullopt);
    EXPECT_EQ(info.startedAt, std::nullopt);
    EXPECT_EQ(platform::filesWrittenBy(server), std::nullopt);
}

TEST_F(PortUsersOfMacos, NameTheRegularFilesThatAreWritten) {
    constexpr std::uint32_t forReading = 1;
    processes[server].descriptors = {
        fileOf("/dev/null", forReading | FWRITE, S_IFCHR), fileOf("/read", forReading, S_IFREG),
        fileOf("/lib/cv54321.log", FWRITE, S_IFREG), socketOf(TSI_S_LISTEN, port, 0)};
    EXPECT_EQ(platform::filesWrittenBy(server), std::vector<std::string>{"/lib/cv54321.log"});
}

}  // namespace
}  // namespace corvane
