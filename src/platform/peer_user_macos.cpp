// Through the list of all TCP sockets that the kernel offers to everyone (xnu
// bsd/netinet/in_pcblist.c). Its structures are in no public header; each record tells its length
// and its kind, and grows at its end only.
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/sysctl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "platform/peer_user.h"

namespace corvane::platform {
namespace {

constexpr const char* list = "net.inet.tcp.pcblist_n";

enum Kind : std::uint32_t { SocketRecord = 0x001, AddressRecord = 0x010, TcpRecord = 0x020 };

// Where the fields of the records are. The structures are packed to four bytes.
constexpr std::size_t lengthAt = 0;
constexpr std::size_t kindAt = 4;
constexpr std::size_t headerEnd = 8;
constexpr std::size_t foreignPortAt = 16;  // xinpcb_n
constexpr std::size_t localPortAt = 18;    // for an IPv4 address the last 4 of its 16 bytes
constexpr std::size_t foreignAddressAt = 60;
constexpr std::size_t localAddressAt = 76;
constexpr std::size_t socketAt = 8;  // xsocket_n
constexpr std::size_t userAt = 64;
constexpr std::size_t stateAt = 36;  // xtcpcb_n
constexpr std::size_t recordAlignment = 8;

enum State : std::int32_t { Established = 4, FinWait1 = 6, FinWait2 = 9 };

template <typename Number>
Number numberAt(std::string_view record, std::size_t at) {
    Number number{};
    if (record.size() >= at + sizeof number) {
        std::memcpy(&number, record.data() + at, sizeof number);
    }
    return number;
}

// Takes the first record off the list; empty at its end.
std::string_view takeRecord(std::string_view& records) {
    const std::size_t length = numberAt<std::uint32_t>(records, lengthAt);
    if (length < headerEnd || length > records.size()) {
        records = {};
        return {};
    }
    const std::string_view record = records.substr(0, length);
    const std::size_t whole = (length + recordAlignment - 1) / recordAlignment * recordAlignment;
    records.remove_prefix(std::min(whole, records.size()));
    return record;
}

bool hasAddresses(std::string_view record, const sockaddr_in& local, const sockaddr_in& foreign) {
    return numberAt<in_port_t>(record, localPortAt) == local.sin_port &&
           numberAt<in_port_t>(record, foreignPortAt) == foreign.sin_port &&
           numberAt<in_addr_t>(record, localAddressAt) == local.sin_addr.s_addr &&
           numberAt<in_addr_t>(record, foreignAddressAt) == foreign.sin_addr.s_addr;
}

// While the server's end is open, its peer is in one of these states.
bool isOpen(std::string_view record) {
    const auto state = numberAt<std::int32_t>(record, stateAt);
    return state == Established || state == FinWait1 || state == FinWait2;
}

// The records of one socket follow each other: its addresses first, the state of TCP last.
std::optional<uid_t> userIn(std::string_view records, const sockaddr_in& client,
                            const sockaddr_in& server) {
    takeRecord(records);  // the head of the list
    bool isClient = false;
    std::optional<uid_t> user;
    for (std::string_view record = takeRecord(records); !record.empty();
         record = takeRecord(records)) {
        const auto kind = numberAt<std::uint32_t>(record, kindAt);
        if (kind == AddressRecord) {
            isClient = hasAddresses(record, client, server);
            user.reset();
        } else if (kind == SocketRecord && isClient &&
                   numberAt<std::uint64_t>(record, socketAt) != 0) {
            user = numberAt<uid_t>(record, userAt);
        } else if (kind == TcpRecord && user && isOpen(record)) {
            return user;
        }
    }
    errno = ENOENT;
    return std::nullopt;
}

// The list may grow between asking for its size, which has some room to spare, and for itself.
std::optional<std::vector<char>> allSockets() {
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::size_t size = 0;
        if (::sysctlbyname(list, nullptr, &size, nullptr, 0) != 0) {
            return std::nullopt;
        }
        std::vector<char> all;
        try {
            all.resize(size);
        } catch (const std::bad_alloc&) {
            errno = ENOMEM;
            return std::nullopt;
        }
        if (::sysctlbyname(list, all.data(), &size, nullptr, 0) == 0) {
            all.resize(size);
            return all;
        }
        if (errno != ENOMEM) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

bool peerOf(int connection, sockaddr_in& peer) {
    socklen_t length = sizeof peer;
    return ::getpeername(connection, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
}

}  // namespace

FileDesc openPeerUsers() { return FileDesc(); }

std::optional<uid_t> peerUser(int /*channel*/, int connection) {
    sockaddr_in server{};
    sockaddr_in client{};
    socklen_t length = sizeof server;
    if (::getsockname(connection, reinterpret_cast<sockaddr*>(&server), &length) != 0 ||
        !peerOf(connection, client)) {
        return std::nullopt;
    }
    const std::optional<std::vector<char>> sockets = allSockets();
    if (!sockets) {
        return std::nullopt;
    }
    const std::optional<uid_t> user =
        userIn(std::string_view(sockets->data(), sockets->size()), client, server);
    // After a reset somebody else may have connected from the same port. A connection that is still
    // there keeps its addresses for itself.
    return user && peerOf(connection, client) ? user : std::nullopt;
}

std::string userName(uid_t user) {
    const passwd* const entry = ::getpwuid(user);
    return entry == nullptr ? "" : entry->pw_name;
}

}  // namespace corvane::platform
