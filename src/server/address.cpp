#include "server/address.h"

#include <arpa/inet.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <array>
#include <cstddef>
#include <optional>

#include "text/strings.h"

namespace corvane {
namespace {

struct Peer {
    sockaddr_in address;
    std::string text;  // empty until it is first asked for
};

// By descriptor. A connection beyond the select set is never served, so never remembered.
std::array<std::optional<Peer>, FD_SETSIZE> peers;

std::optional<Peer>* slotOf(int sock) {
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
    if (std::optional<Peer>* const known = slotOf(sock); known != nullptr && known->has_value()) {
        Peer& peer = **known;
        if (peer.text.empty()) {
            peer.text = formatAddress(peer.address);
        }
        return peer.text;
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
    if (std::optional<Peer>* const slot = slotOf(sock); slot != nullptr) {
        *slot = Peer{peer, {}};
    }
}

void forgetPeer(int sock) {
    if (std::optional<Peer>* const slot = slotOf(sock); slot != nullptr) {
        slot->reset();
    }
}

}  // namespace corvane
