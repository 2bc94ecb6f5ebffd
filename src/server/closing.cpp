// Closing clients and listeners, and what the end of a client means for the server.
#include <cerrno>
#include <log4cpp/Category.hh>
#include <string>
#include <utility>

#include "log/log.h"
#include "server/address.h"
#include "server/server.h"

namespace corvane {

void Server::closeSocket(int sock, bool graceful) {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.closesocket");
    const bool isInfo = isLogged(log4cpp::Priority::INFO);
    const bool isDebug = isLogged(log4cpp::Priority::DEBUG);
    const std::string where = addressOf(sock);
    if (isInfo) {
        log.info("Closing socket %s", where.c_str());
    }
    if (Connection* const client = clients.find(sock); graceful && client != nullptr) {
        client->halfClose();
    }
    if (isDebug) {
        log.debug("raw close socket %s", where.c_str());
    }
    if (const int error = closeNow(sock); error != 0) {
        log.warn("Error %d closing socket %s", error, where.c_str());
    }
    if (listenersPausedUntil_) {
        resumeListeners();  // a descriptor is free again
    }
    if (isDebug) {
        log.debug("closeSocket %s end", where.c_str());
    }
}

// Returns 0 or an error number. A closed client stays until the next turn: its request may still be
// at work when a termination signal closes everything.
int Server::closeNow(int sock) {
    if (std::unique_ptr<Connection> client = clients.remove(sock)) {
        watch_.forget(sock);
        const int error = client->close();
        closed_.push_back(std::move(client));
        return error;
    }
    if (Listener* const listener = findListener(sock); listener != nullptr) {
        watch_.forget(sock);
        const int error = listener->sock.close() == 0 ? 0 : errno;
        listeners.erase(listeners.begin() + (listener - listeners.data()));
        return error;
    }
    return EBADF;
}

void Server::closeSocket(std::vector<int>& socks, int sock, bool graceful) {
    closeSocket(sock, graceful);
    removeSocket(socks, sock);
}

void Server::deinitSockets(std::vector<int>& socks, bool graceful) {
    for (const int sock : std::vector<int>(socks)) {
        closeSocket(socks, sock, graceful);
    }
}

bool Server::errorCloseSocket(int sock, bool graceful) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.close");
    const int policy = options.shutdownOnDisconnect;
    const bool keepServing = policy == 0 || (policy == 2 && clients.size() >= 2);
    closeSocket(sock, graceful);
    if (!keepServing) {
        log.info(
            "Marking server for shutdown: closing client's %s connection and SHUTDOWNONDISCONNECT "
            "is set",
            unknownAddress);
    }
    return keepServing;
}

void Server::deinitListeners() {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.deinit.listener");
    if (!listeners.empty()) {
        log.info("Deinit listener sockets...");
    }
    while (!listeners.empty()) {
        closeSocket(listeners.front().sock, false);
    }
}

void Server::deinitClients() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.deinit.client");
    if (!clients.empty()) {
        log.info("Deinit clients sockets...");
    }
    while (const Connection* const client = clients.first()) {
        closeSocket(client->sock(), true);
    }
}

void Server::deinitServer() {
    deinitClients();
    deinitListeners();
}

const std::string& Server::addressOf(int sock) {
    static const std::string unknown = unknownAddress;
    if (const Connection* const client = clients.find(sock); client != nullptr) {
        return client->address();
    }
    const Listener* const listener = findListener(sock);
    return listener == nullptr ? unknown : listener->address;
}

}  // namespace corvane
