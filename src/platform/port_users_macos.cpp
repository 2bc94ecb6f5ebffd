// Through libproc, which tells about the user's own processes only, or root about all.
#include <arpa/inet.h>
#include <libproc.h>
#include <netinet/in.h>
#include <sys/fcntl.h>
#include <sys/proc_info.h>
#include <sys/stat.h>

#include <array>

#include "platform/port_users.h"
#include "text/strings.h"

namespace corvane::platform {
namespace {

// Takes a list whose size the system tells first; it may grow meanwhile.
template <typename Entry, typename Ask>
std::vector<Entry> listOf(Ask ask) {
    constexpr std::size_t spare = 16;
    const int wanted = ask(nullptr, 0);
    if (wanted <= 0) {
        return {};
    }
    std::vector<Entry> entries(static_cast<std::size_t>(wanted) / sizeof(Entry) + spare);
    const int size = ask(entries.data(), static_cast<int>(entries.size() * sizeof(Entry)));
    entries.resize(size <= 0 ? 0 : static_cast<std::size_t>(size) / sizeof(Entry));
    return entries;
}

std::vector<proc_fdinfo> descriptorsOf(pid_t process) {
    return listOf<proc_fdinfo>([process](void* room, int size) {
        return ::proc_pidinfo(process, PROC_PIDLISTFDS, 0, room, size);
    });
}

std::string placeOf(in_addr address, int port) {
    std::array<char, INET_ADDRSTRLEN> name{};
    ::inet_ntop(AF_INET, &address, name.data(), name.size());
    return format("%s:%d", name.data(), port);
}

int portOf(int port) { return ntohs(static_cast<in_port_t>(port)); }

std::optional<PortUser> portUserIn(const socket_info& socket, int port) {
    const in_sockinfo& ends = socket.soi_proto.pri_tcp.tcpsi_ini;
    if (socket.soi_kind != SOCKINFO_TCP || portOf(ends.insi_lport) != port ||
        (ends.insi_vflag & INI_IPV4) == 0) {
        return std::nullopt;
    }
    PortUser user;
    user.state = socket.soi_proto.pri_tcp.tcpsi_state == TSI_S_LISTEN ? PortUser::State::Listening
                                                                      : PortUser::State::Connected;
    user.remotePort = portOf(ends.insi_fport);
    user.local = placeOf(ends.insi_laddr.ina_46.i46a_addr4, port);
    user.remote = placeOf(ends.insi_faddr.ina_46.i46a_addr4, user.remotePort);
    return user;
}

}  // namespace

std::vector<PortUser> portUsers(int port) {
    std::vector<PortUser> users;
    const auto processes = listOf<pid_t>(
        [](void* room, int size) { return ::proc_listpids(PROC_ALL_PIDS, 0, room, size); });
    for (const pid_t process : processes) {
        for (const proc_fdinfo& fd : descriptorsOf(process)) {
            socket_fdinfo info{};
            if (fd.proc_fdtype != PROX_FDTYPE_SOCKET ||
                ::proc_pidfdinfo(process, fd.proc_fd, PROC_PIDFDSOCKETINFO, &info, sizeof info) !=
                    static_cast<int>(sizeof info)) {
                continue;
            }
            if (auto user = portUserIn(info.psi, port)) {
                user->process = process;
                user->user = processInfo(process).user;
                users.push_back(std::move(*user));
            }
        }
    }
    return users;
}

ProcessInfo processInfo(pid_t process) {
    ProcessInfo result;
    proc_bsdinfo info{};
    if (::proc_pidinfo(process, PROC_PIDTBSDINFO, 0, &info, sizeof info) ==
        static_cast<int>(sizeof info)) {
        result.user = info.pbi_uid;
        result.startedAt = static_cast<std::int64_t>(info.pbi_start_tvsec);
    }
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    if (::proc_pidpath(process, path.data(), path.size()) > 0) {
        result.executable = path.data();
    }
    return result;
}

std::optional<std::vector<std::string>> filesWrittenBy(pid_t process) {
    const std::vector<proc_fdinfo> descriptors = descriptorsOf(process);
    if (descriptors.empty()) {  // the server always has some
        return std::nullopt;
    }
    std::vector<std::string> files;
    for (const proc_fdinfo& fd : descriptors) {
        vnode_fdinfowithpath info{};
        if (fd.proc_fdtype == PROX_FDTYPE_VNODE &&
            ::proc_pidfdinfo(process, fd.proc_fd, PROC_PIDFDVNODEPATHINFO, &info, sizeof info) ==
                static_cast<int>(sizeof info) &&
            (info.pfi.fi_openflags & FWRITE) != 0 && S_ISREG(info.pvip.vip_vi.vi_stat.vst_mode)) {
            files.emplace_back(info.pvip.vip_path);
        }
    }
    return files;
}

}  // namespace corvane::platform
