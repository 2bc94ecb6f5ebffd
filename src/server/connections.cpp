// Connections: accepting and closing them.
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <log4cpp/Category.hh>

#include "log/log.h"
#include "platform/file_desc.h"
#include "platform/system.h"
#include "server/address.h"
#include "server/server.h"

namespace corvane {
namespace {

// How long an accept that failed for want of descriptors or memory is not tried again. The listener
// stays readable all that time; without the pause the loop would spin.
constexpr std::chrono::milliseconds acceptPause{100};

bool isShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

void Server::processListener(int listenSock) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.listener");
    sockaddr_in peer{};
    FileDesc sock(platform::acceptConnection(listenSock, peer));
    int error = sock == -1 ? errno : 0;
    readable_.askAgain(listenSock);
    if (error == EAGAIN || error == EINTR) {
        return;  // the connection is gone again
    }
    if (sock >= FD_SETSIZE) {
        sock.close();
        error = EMFILE;
    } else if (isShortage(error)) {
        listenersPausedUntil_ = std::chrono::steady_clock::now() + acceptPause;
    }
    if (error != 0) {
        if (log.isWarnEnabled()) {
            log.warn("accept error %d on socket %s", error, formatAddress(listenSock).c_str());
        }
        return;
    }
    rememberPeer(sock, peer);
    addSocket(clients, sock.release());
    if (isLogged(log4cpp::Priority::INFO)) {
        log.info("accepted connection from %s", formatAddress(clients.back()).c_str());
    }
}

void Server::addSocket(std::vector<int>& socks, int sock) { socks.push_back(sock); }

bool Server::removeSocket(std::vector<int>& socks, int sock) {
    const auto found = std::find(socks.begin(), socks.end(), sock);
    if (found == socks.end()) {
        return false;
    }
    socks.erase(found);
    return true;
}

void Server::closeSocket(std::vector<int>& socks, int sock, bool graceful) {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.closesocket");
    const bool isInfo = isLogged(log4cpp::Priority::INFO);
    const bool isDebug = isLogged(log4cpp::Priority::DEBUG);
    const std::string where = isInfo ? formatAddress(sock) : std::string();
    if (isInfo) {
        log.info("Closing socket %s", where.c_str());
    }
    if (graceful) {
        ::shutdown(sock, SHUT_WR);
    }
    if (isDebug) {
        log.debug("raw close socket %s", where.c_str());
    }
    if (::close(sock) != 0) {
        const int error = errno;
        log.warn("Error %d closing socket %s", error, formatAddress(sock).c_str());
    }
    forgetPeer(sock);
    readable_.forget(sock);
    surplus_.forget(sock);
    removeSocket(socks, sock);
    listenersPausedUntil_.reset();  // a descriptor is free again
    if (isDebug) {
        log.debug("closeSocket %s end", where.c_str());
    }
}

bool Server::errorCloseSocket(int sock, bool graceful) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.close");
    const int policy = options.shutdownOnDisconnect;
    const bool keepServing = policy == 0 || (policy == 2 && clients.size() >= 2);
    closeSocket(clients, sock, graceful);
    if (!keepServing && log.isInfoEnabled()) {
        log.info(
            "Marking server for shutdown: closing client's %s connection and SHUTDOWNONDISCONNECT "
            "is set",
            formatAddress(sock).c_str());
    }
    return keepServing;
}

void Server::deinitSockets(std::vector<int>& socks, bool graceful) {
    for (const int sock : std::vector<int>(socks)) {
        closeSocket(socks, sock, graceful);
    }
}

void Server::deinitListeners() {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.deinit.listener");
    std::vector<int> closing;
    closing.swap(listeners);
    if (!closing.empty()) {
        log.info("Deinit listener sockets...");
        deinitSockets(closing, false);
    }
}

void Server::deinitClients() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.deinit.client");
    if (!clients.empty()) {
        log.info("Deinit clients sockets...");
        deinitSockets(clients, true);
    }
}

void Server::deinitServer() {
    deinitClients();
    deinitListeners();
}

}  // namespace corvane
