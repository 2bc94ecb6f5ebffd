// Who may connect when only the server's own user and root may.
#include <cerrno>
#include <chrono>
#include <log4cpp/Category.hh>
#include <optional>

#include "platform/peer_user.h"
#include "server/address.h"
#include "server/server.h"

namespace corvane {
namespace {

constexpr std::chrono::minutes warningPeriod{1};

void warn(const sockaddr_in& peer, std::optional<uid_t> user, int error) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.listener");
    const std::string where =
        peer.sin_family == AF_INET ? formatAddress(peer) : std::string(unknownAddress);
    if (user) {
        log.warn("Client %s: refused, of user %u (%s)", where.c_str(), *user,
                 platform::userName(*user).c_str());
    } else {
        log.warn("Client %s: refused, its user cannot be told (%d)", where.c_str(), error);
    }
}

}  // namespace

bool Server::mayConnect(int sock, const sockaddr_in& peer) {
    if (peerUsers_ == -1) {
        peerUsers_ = platform::openPeerUsers();
    }
    const std::optional<uid_t> user = platform::peerUser(peerUsers_, sock);
    const int error = errno;
    if (user && platform::isOwnUserOrRoot(*user)) {
        return true;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextUserWarning_) {
        nextUserWarning_ = now + warningPeriod;
        warn(peer, user, error);
    }
    return false;
}

}  // namespace corvane
