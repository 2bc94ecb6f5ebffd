#include "server/server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <log4cpp/Category.hh>
#include <utility>

#include "platform/file_desc.h"
#include "platform/system.h"
#include "server/address.h"
#include "server/socket_exception.h"

namespace corvane {
namespace {

constexpr int backlog = 128;
constexpr int largestPort = 65535;

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

// A large request or reply is often followed by another, as when an application saves several
// files, and fresh memory costs more than the rest of the work. So it is kept, but not for long.
constexpr int memoryKeptSeconds = 1;

bool hasPassed(const Deadline& deadline) {
    return deadline && std::chrono::steady_clock::now() >= *deadline;
}

Deadline earlier(const Deadline& a, const Deadline& b) {
    if (!a || !b) {
        return a ? a : b;
    }
    return std::min(a, b);
}

bool isLoopback(const in_addr& ip) { return (ntohl(ip.s_addr) >> 24) == 127; }

}  // namespace

Server::~Server() {
    try {
        deinitServer();
    } catch (const std::exception&) {
        // Nobody is left to be told; the system closes the sockets.
    }
}

void Server::initServer() { initListener(options.address, options.port); }

void Server::initListener(const std::string& listenAddress, int listenPort) {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.init");
    log.debug("Creating socket...");
    FileDesc sock(::socket(AF_INET, SOCK_STREAM, 0));
    if (sock == -1 || sock >= FD_SETSIZE) {
        throw SocketException("Create socket error", sock == -1 ? errno : EMFILE);
    }
    configure(sock);

    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_addr = resolve(listenAddress);
    local.sin_port = htons(static_cast<in_port_t>(listenPort));
    if (log.isDebugEnabled()) {
        log.debug("Binding socket to %s (%s)...", formatAddress(local).c_str(),
                  listenAddress.c_str());
    }
    if (listenPort < 0 || listenPort > largestPort) {
        throw BindException(local.sin_addr, listenPort, EINVAL);
    }
    if (local.sin_addr.s_addr == INADDR_NONE) {
        throw BindException(local.sin_addr, listenPort, EADDRNOTAVAIL);
    }
    if (::bind(sock, reinterpret_cast<sockaddr*>(&local), sizeof local) != 0) {
        throw BindException(local.sin_addr, listenPort, errno);
    }
    if (isLoopback(local.sin_addr)) {
        platform::simplifyCongestionControl(sock);
    }
    log.debug("Listening with backlog %d...", backlog);
    if (::listen(sock, backlog) != 0) {
        throw SocketException("Listen exception", errno);
    }
    readable_.prepare();
    clients.reserve(FD_SETSIZE);  // adding a client never needs memory, which may be short then
    addSocket(listeners, sock);
    static_cast<void>(sock.release());
    log.notice("Listening on %s", formatAddress(listeners.back()).c_str());
    if (!isLoopback(local.sin_addr)) {
        log.warn("%s is not a loopback address: everyone who can reach it can use this server",
                 formatAddress(listeners.back()).c_str());
    }
}

void Server::process() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.process");
    log.debug("Process loop start");
    while (serveNext()) {
    }
    log.debug("Process loop end");
    deinitClients();
}

// Waits for the next event; 0 when the inactivity time is over. The inactivity clock starts anew
// with every call, but not when only the listeners come back into play or memory is given back.
int Server::waitForEvent() {
    const Deadline idle = deadlineAfter(options.inactivity);
    while (true) {
        if (hasPassed(listenersPausedUntil_)) {
            listenersPausedUntil_.reset();
        }
        returnMemory();
        fd_set watched;
        FD_ZERO(&watched);
        int highest = addSocketsToFdSet(watched, clients);
        if (!listenersPausedUntil_) {
            highest = std::max(highest, addSocketsToFdSet(watched, listeners));
        }
        const Deadline next = earlier(idle, earlier(listenersPausedUntil_, freedMemoryKeptUntil_));
        const int ready = readable_.wait(highest + 1, watched, next);
        if (ready != 0 || hasPassed(idle)) {
            return ready;
        }
    }
}

void Server::returnMemory() {
    if (std::exchange(workWasLarge_, false)) {
        request_.clearAndShrink(largeSize);
        freedMemoryKeptUntil_ = deadlineAfter(memoryKeptSeconds);
    } else if (hasPassed(freedMemoryKeptUntil_)) {
        platform::returnFreedMemory();
        freedMemoryKeptUntil_.reset();
    }
}

// One turn of the loop: one event, one socket. Returns false when the server has to stop.
bool Server::serveNext() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.process");
    if (listeners.empty()) {
        throw Exception("There are no listening sockets...");
    }
    const int ready = waitForEvent();
    if (ready == -1) {
        if (errno == EINTR) {
            return true;
        }
        throw SocketException("select() error", errno);
    }
    if (ready == 0) {
        log.notice("Inactivity time (%d) has elapsed. Quitting...", options.inactivity);
        return false;
    }
    if (const int client = isSocketsEvent(readable_.found(), clients); client != -1) {
        return processClient(client);
    }
    if (const int listener = isSocketsEvent(readable_.found(), listeners); listener != -1) {
        processListener(listener);
    } else {
        log.warn("Event from unknown source!");
    }
    return true;
}

int Server::addSocketsToFdSet(fd_set& set, const std::vector<int>& socks) {
    int highest = 0;
    for (const int sock : socks) {
        FD_SET(sock, &set);
        highest = std::max(highest, sock);
    }
    return highest;
}

int Server::isSocketsEvent(const fd_set& set, const std::vector<int>& socks) {
    const auto found = std::find_if(socks.begin(), socks.end(),
                                    [&set](int sock) { return FD_ISSET(sock, &set) != 0; });
    return found == socks.end() ? -1 : *found;
}

}  // namespace corvane
