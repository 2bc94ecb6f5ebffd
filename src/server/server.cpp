// The loop: what it waits for, and whom it serves next.
#include "server/server.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <log4cpp/Category.hh>

#include "platform/peer_user.h"
#include "server/socket_exception.h"

namespace corvane {
namespace {

log4cpp::Category& loopLog() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.process");
    return log;
}

}  // namespace

// Closing a client must not need memory, which may be what is short.
Server::Server() { closed_.reserve(FD_SETSIZE); }

Server::~Server() {
    try {
        deinitServer();
    } catch (const std::exception&) {
        // Nobody is left to be told; the system closes the sockets.
    }
}

void Server::initServer() {
    if (options.sameUser) {
        peerUsers_ = platform::openPeerUsers();  // as long as there are descriptors
    }
    initListener(options.address, options.port);
}

void Server::process() {
    loopLog().debug("Process loop start");
    while (serveNext() == Next::Serve) {
    }
    loopLog().debug("Process loop end");
    deinitClients();
}

// One turn: one wait, one socket, clients before listeners.
Server::Next Server::serveNext() {
    closed_.clear();
    if (listeners.empty()) {
        throw Exception("There are no listening sockets...");
    }
    switch (waitForEvent()) {
        case Wait::Signal:
            return Next::Serve;
        case Wait::Inactive:
            loopLog().notice("Inactivity time (%d) has elapsed. Quitting...", options.inactivity);
            return Next::Stop;
        case Wait::Ready:
            break;
    }
    if (Connection* const client = clients.firstReadable(); client != nullptr) {
        return serve(*client);
    }
    accept(*readableListener());
    return Next::Serve;
}

// Asks for what is new even when a socket is known to be readable, so that the first of all is
// served. The inactivity clock starts anew with every call, but not when only the listeners come
// back into play or memory is given back.
Server::Wait Server::waitForEvent() {
    const Deadline idle = deadlineAfter(options.inactivity);
    while (true) {
        if (hasPassed(listenersPausedUntil_)) {
            resumeListeners();
        }
        const Deadline wakeUp = earlier(earlier(idle, listenersPausedUntil_), returnMemory());
        const int count =
            watch_.wait(anyReadable() ? std::chrono::steady_clock::time_point() : wakeUp);
        const int error = errno;
        takeEvents();
        if (count == -1 && error != EINTR) {
            throw SocketException("select() error", error);
        }
        if (count == -1) {
            return Wait::Signal;  // its handler may have closed what was listed
        }
        if (anyReadable()) {
            return Wait::Ready;
        }
        if (hasPassed(idle)) {
            return Wait::Inactive;
        }
    }
}

void Server::takeEvents() {
    for (const auto [sock, needsRearm] : watch_.events()) {
        if (Connection* const client = clients.find(sock); client != nullptr) {
            client->arrived(needsRearm);
            clients.markReadable(*client);
        } else if (Listener* const listener = findListener(sock); listener != nullptr) {
            listener->isReadable = true;
        } else if (!stopRequested()) {  // which closes all that was listed
            loopLog().warn("Event from unknown source!");
        }
    }
}

bool Server::anyReadable() { return clients.anyReadable() || readableListener() != nullptr; }

Deadline Server::returnMemory() {
    if (freedMemory_.isExpected()) {
        input_.clearAndShrink(largeSize);
    }
    return freedMemory_.update();
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

void Server::addSocket(std::vector<int>& socks, int sock) { socks.push_back(sock); }

bool Server::removeSocket(std::vector<int>& socks, int sock) {
    const auto found = std::find(socks.begin(), socks.end(), sock);
    if (found == socks.end()) {
        return false;
    }
    socks.erase(found);
    return true;
}

}  // namespace corvane
