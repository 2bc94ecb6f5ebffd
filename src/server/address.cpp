#include "server/address.h"

#include <arpa/inet.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <array>
#include <cstddef>

#include "text/strings.h"

namespace corvane {
namespace {

struct Peer {
    bool known;
    sockaddr_in address;
    std::array<char, sizeof "255.255.255.255:65535"> text;  // empty until it is first asked for
};

// By descriptor. A connection beyond the select set is never served, so never remembered.
std::array<Peer, FD_SETSIZE> peers;

Peer* slotOf(int sock) {
    return sock >= 0 && sock < FD_SETSIZE ? &peers[static_cast<std::size_t>(sock)] : nullptr;
}

}  // namespace

std::string formatAddress(const in_addr& a, int port) {
    const auto* octets = reinterpret_cast<const unsigned char*>(&a.s_addr);
    return format("%d.%d.%d.%d:%d", octets[0], octets[1], octets[2], octets[3], port);
}

std::string formatAddress(const sockaddr_in& sa) {
    return formatAddress(sa.sin_addr, ntohs(sa.sin_port));
}

std::string formatAddress(int sock) {
    if (Peer* const peer = slotOf(sock); peer != nullptr && peer->known) {
        if (peer->text.front() == '\0') {
            formatAddress(peer->address).copy(peer->text.data(), peer->text.size() - 1);
        }
        return peer->text.data();
    }
    int listening = 1;
    socklen_t length = sizeof listening;
    ::getsockopt(sock, SOL_SOCKET, SO_ACCEPTCONN, &listening, &length);
    sockaddr_in address{};
    length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const int result = listening == 1 ? ::getsockname(sock, generic, &length)
                                      : ::getpeername(sock, generic, &length);
    return result == 0 && address.sin_family == AF_INET ? formatAddress(address) : "?.?.?.?:?";
}

void rememberPeer(int sock, const sockaddr_in& peer) {
    if (Peer* const slot = slotOf(sock); slot != nullptr) {
        *slot = {true, peer, {}};
    }
}

void forgetPeer(int sock) {
    if (Peer* const slot = slotOf(sock); slot != nullptr) {
        *slot = {};
    }
}

}  // namespace corvane
