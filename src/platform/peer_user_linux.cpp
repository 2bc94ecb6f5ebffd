// Through inet_diag: the kernel is asked for exactly the client's socket, by both addresses.
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pwd.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>

#include "platform/peer_user.h"

namespace corvane::platform {
namespace {

struct Question {
    nlmsghdr header;
    inet_diag_req_v2 socket;
};

// Attributes that were not asked for may follow; they are cut off.
struct Answer {
    nlmsghdr header;
    union {
        inet_diag_msg socket;
        nlmsgerr error;
    };
};

Question questionFor(const sockaddr_in& client, const sockaddr_in& server) {
    static std::uint32_t number = 0;
    Question question{};
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST;
    question.header.nlmsg_seq = ++number;
    question.socket.sdiag_family = AF_INET;  // that of an IPv6 socket with mapped addresses, too
    question.socket.sdiag_protocol = IPPROTO_TCP;
    question.socket.idiag_states = ~0U;
    inet_diag_sockid& id = question.socket.id;
    id.idiag_sport = client.sin_port;
    id.idiag_dport = server.sin_port;
    id.idiag_src[0] = client.sin_addr.s_addr;
    id.idiag_dst[0] = server.sin_addr.s_addr;
    id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    return question;
}

// The kernel has answered when send(2) returns. An older answer that nobody took is passed over.
// Returns the bytes of the answer, or -1.
ssize_t ask(int channel, const Question& question, Answer& answer) {
    ssize_t size = ::send(channel, &question, sizeof question, 0);
    while (size > 0) {
        answer = {};
        size = ::recv(channel, &answer, sizeof answer, 0);
        if (answer.header.nlmsg_seq == question.header.nlmsg_seq) {
            break;
        }
    }
    return size;
}

// Where there is no such connection the kernel shows a listener of the client's port, or a socket
// that has yet to connect, maybe of another user. While the server's end is open, its peer is in
// one of these states.
bool isOtherEnd(const inet_diag_msg& found, const Question& question) {
    const inet_diag_sockid& wanted = question.socket.id;
    // An IPv4 address is the last quarter of a mapped one.
    const std::size_t at = found.idiag_family == AF_INET6 ? 3 : 0;
    return found.id.idiag_sport == wanted.idiag_sport &&
           found.id.idiag_dport == wanted.idiag_dport &&
           found.id.idiag_src[at] == wanted.idiag_src[0] &&
           found.id.idiag_dst[at] == wanted.idiag_dst[0] &&
           (found.idiag_state == TCP_ESTABLISHED || found.idiag_state == TCP_FIN_WAIT1 ||
            found.idiag_state == TCP_FIN_WAIT2);
}

std::optional<uid_t> unknown(int error) {
    errno = error;
    return std::nullopt;
}

uid_t overflowUser() {
    uid_t user = 65534;
    std::ifstream("/proc/sys/kernel/overflowuid") >> user;
    return user;
}

// In a user namespace all users that are not part of it have one number, which may be the server's.
bool standsForOthers(uid_t user) {
    static const uid_t overflow = overflowUser();
    if (user != overflow) {
        return false;
    }
    uid_t inside = 1;
    uid_t outside = 1;
    std::uint32_t count = 0;
    std::ifstream("/proc/self/uid_map") >> inside >> outside >> count;
    return count != std::numeric_limits<std::uint32_t>::max();
}

std::optional<uid_t> userOf(const inet_diag_msg& found) {
    // Kernels before 6.17 tell user 0 for every socket that its program has closed.
    if (found.idiag_inode == 0 && found.idiag_uid == 0) {
        return unknown(ENOENT);
    }
    return standsForOthers(found.idiag_uid) ? unknown(EOVERFLOW)
                                            : std::optional<uid_t>(found.idiag_uid);
}

bool peerOf(int connection, sockaddr_in& peer) {
    socklen_t length = sizeof peer;
    return ::getpeername(connection, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
}

}  // namespace

FileDesc openPeerUsers() {
    FileDesc channel(
        ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_SOCK_DIAG));
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    // Connected, it takes messages from the kernel only.
    if (channel != -1 &&
        ::connect(channel, reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel) != 0) {
        const int error = errno;
        channel.close();
        errno = error;
    }
    return channel;
}

std::optional<uid_t> peerUser(int channel, int connection) {
    sockaddr_in server{};
    sockaddr_in client{};
    socklen_t length = sizeof server;
    if (::getsockname(connection, reinterpret_cast<sockaddr*>(&server), &length) != 0 ||
        !peerOf(connection, client)) {
        return std::nullopt;
    }
    const Question question = questionFor(client, server);
    Answer answer{};
    const ssize_t size = ask(channel, question, answer);
    if (size == -1) {
        return std::nullopt;
    }
    if (answer.header.nlmsg_type == NLMSG_ERROR && answer.error.error != 0) {
        return unknown(-answer.error.error);
    }
    if (answer.header.nlmsg_type != SOCK_DIAG_BY_FAMILY || size != sizeof answer) {
        return unknown(EPROTO);
    }
    if (!isOtherEnd(answer.socket, question)) {
        return unknown(ENOENT);
    }
    // After a reset somebody else may have connected from the same port. A connection that is still
    // there keeps its addresses for itself.
    return peerOf(connection, client) ? userOf(answer.socket) : std::nullopt;
}

std::string userName(uid_t user) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> list(std::fopen("/etc/passwd", "re"),
                                                               std::fclose);
    while (const passwd* const entry = list ? ::fgetpwent(list.get()) : nullptr) {
        if (entry->pw_uid == user) {
            return entry->pw_name;
        }
    }
    return "";
}

}  // namespace corvane::platform
