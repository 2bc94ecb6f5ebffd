// Listeners: opening them, and accepting connections.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <log4cpp/Category.hh>
#include <new>
#include <utility>

#include "log/log.h"
#include "platform/system.h"
#include "server/address.h"
#include "server/server.h"
#include "server/socket_exception.h"

namespace corvane {
namespace {

constexpr int backlog = 128;
constexpr int largestPort = 65535;

// How long an accept that failed for want of descriptors or memory is not tried again. The listener
// stays readable all that time; without the pause the loop would spin.
constexpr std::chrono::milliseconds acceptPause{100};

bool isShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

in_addr resolve(const std::string& address) {
    in_addr ip{};
    if (address.empty()) {
        return ip;
    }
    ip.s_addr = ::inet_addr(address.c_str());
    if (ip.s_addr == INADDR_NONE) {
        const hostent* host = ::gethostbyname(address.c_str());
        if (host != nullptr && host->h_addrtype == AF_INET && host->h_addr_list[0] != nullptr) {
            std::memcpy(&ip, host->h_addr_list[0], sizeof ip);
        }
    }
    return ip;
}

// The options of every listener. Connections inherit TCP_NODELAY from it: no reply waits for the
// acknowledgement of the one before.
void configure(int sock) {
    const int on = 1;
    if (::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0) {
        const int error = errno;
        throw SocketException("setsockopt() SO_REUSEADDR error", error);
    }
    ::setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ::fcntl(sock, F_SETFD, FD_CLOEXEC);
    // A connection may be gone again between the wait and accept, which must not block then.
    ::fcntl(sock, F_SETFL, ::fcntl(sock, F_GETFL) | O_NONBLOCK);
}

bool isLoopback(const in_addr& ip) { return (ntohl(ip.s_addr) >> 24) == 127; }

log4cpp::Category& initLog() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.init");
    return log;
}

// Returns the address that the socket is bound to.
in_addr bindTo(int sock, const std::string& address, int port) {
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_addr = resolve(address);
    local.sin_port = htons(static_cast<in_port_t>(port));
    if (initLog().isDebugEnabled()) {
        initLog().debug("Binding socket to %s (%s)...", formatAddress(local).c_str(),
                        address.c_str());
    }
    if (port < 0 || port > largestPort) {
        throw BindException(local.sin_addr, port, EINVAL);
    }
    if (local.sin_addr.s_addr == INADDR_NONE) {
        throw BindException(local.sin_addr, port, EADDRNOTAVAIL);
    }
    if (::bind(sock, reinterpret_cast<sockaddr*>(&local), sizeof local) != 0) {
        throw BindException(local.sin_addr, port, errno);
    }
    return local.sin_addr;
}

}  // namespace

void Server::initListener(const std::string& address, int port) {
    initLog().debug("Creating socket...");
    FileDesc sock(::socket(AF_INET, SOCK_STREAM, 0));
    if (sock == -1 || sock >= FD_SETSIZE) {
        throw SocketException("Create socket error", sock == -1 ? errno : EMFILE);
    }
    configure(sock);
    const in_addr ip = bindTo(sock, address, port);
    if (isLoopback(ip)) {
        platform::simplifyCongestionControl(sock);
    }
    initLog().debug("Listening with backlog %d...", backlog);
    if (::listen(sock, backlog) != 0) {
        throw SocketException("Listen exception", errno);
    }
    watch_.open();
    watch_.watch(sock);
    const std::string where = formatAddress(sock);
    listeners.push_back({std::move(sock), where});
    initLog().notice("Listening on %s", where.c_str());
    if (!isLoopback(ip)) {
        initLog().warn(
            "%s is not a loopback address: everyone who can reach it can use this server",
            where.c_str());
    }
}

void Server::processListener(int listenSock) {
    if (Listener* const listener = findListener(listenSock); listener != nullptr) {
        accept(*listener);
    }
}

void Server::accept(Listener& listener) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.listener");
    sockaddr_in peer{};
    FileDesc sock(platform::acceptConnection(listener.sock, peer));
    int error = sock == -1 ? errno : 0;
    listener.isReadable = false;
    watch_.rearm(listener.sock);
    if (error == EAGAIN || error == EINTR) {
        return;  // the connection is gone again
    }
    if (sock != -1 && options.sameUser && !mayConnect(sock, peer)) {
        return;
    }
    if (sock >= FD_SETSIZE) {
        sock.close();
        error = EMFILE;
    } else if (isShortage(error)) {
        pauseListeners();
    }
    const Connection* client = nullptr;
    try {
        client = error == 0 ? &addClient(std::move(sock), peer) : nullptr;
    } catch (const std::bad_alloc&) {
        error = ENOMEM;
        pauseListeners();
    }
    if (client == nullptr) {
        log.warn("accept error %d on socket %s", error, listener.address.c_str());
    } else if (isLogged(log4cpp::Priority::INFO)) {
        log.info("accepted connection from %s", client->address().c_str());
    }
}

Connection& Server::addClient(FileDesc sock, const sockaddr_in& peer) {
    Connection& client = clients.add(std::move(sock), peer);
    watch_.watch(client.sock());
    return client;
}

void Server::pauseListeners() {
    for (Listener& listener : listeners) {
        watch_.unwatch(listener.sock);
        listener.isReadable = false;
    }
    listenersPausedUntil_ = std::chrono::steady_clock::now() + acceptPause;
}

void Server::resumeListeners() {
    for (const Listener& listener : listeners) {
        watch_.watch(listener.sock);
    }
    listenersPausedUntil_.reset();
}

Server::Listener* Server::findListener(int sock) {
    const auto found = std::find_if(listeners.begin(), listeners.end(),
                                    [sock](const Listener& each) { return each.sock == sock; });
    return found == listeners.end() ? nullptr : &*found;
}

Server::Listener* Server::readableListener() {
    const auto found = std::find_if(listeners.begin(), listeners.end(),
                                    [](const Listener& each) { return each.isReadable; });
    return found == listeners.end() ? nullptr : &*found;
}

}  // namespace corvane
