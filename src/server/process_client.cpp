// One request of one client, from its first byte to its reply, and what becomes of the connection
// when something fails.
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <log4cpp/Category.hh>
#include <new>

#include "log/log.h"
#include "server/request_guard.h"
#include "server/server.h"
#include "server/socket_exception.h"

namespace corvane {
namespace {

constexpr std::chrono::minutes foreignWarningPeriod{1};
constexpr std::string_view shutdownCommand = "shutdown";

log4cpp::Category& clientLog() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.server.process.client");
    return log;
}

// No function of the logging library may throw, and it copies a line several times. So memory that
// runs out with a large request must run out here.
void logRequest(std::string_view text) {
    constexpr std::size_t large = std::size_t{64} * 1024;
    constexpr std::size_t copies = 8;
    if (text.size() > large) {
        ByteBuffer().room(copies * text.size());
    }
    clientLog().debug("request data '" + std::string(text) + "'");
}

// Takes what has arrived out of the socket, within reason: closing it with bytes left inside would
// reset the connection, and the client might lose the reply.
void dropReceived(int sock) {
    constexpr std::size_t mostDropped = std::size_t{1024} * 1024;
    std::array<char, std::size_t{16} * 1024>
        block;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    for (std::size_t dropped = 0; dropped < mostDropped; dropped += block.size()) {
        if (::recv(sock, block.data(), block.size(), MSG_DONTWAIT) <= 0) {
            return;
        }
    }
}

}  // namespace

bool Server::processClient(int sock) {
    Connection* const client = clients.find(sock);
    return client == nullptr || serve(*client) == Next::Serve;
}

// One request of one client, whatever it leads to.
Server::Next Server::serve(Connection& client) {
    const LogBatch linesOfOneRequest;
    client.borrow(input_);
    Next next = serveAndRecover(client);
    try {
        settle(client);
    } catch (const IOException& e) {
        // There is no memory for what is unread.
        if (closeFailed(client, e.what()) == Next::Stop) {
            next = Next::Stop;
        }
        settle(client);
    }
    return next;
}

Server::Next Server::serveAndRecover(Connection& client) {
    try {
        return serveRequest(client);
    } catch (const ForeignRequest& e) {
        return refuse(client, e.line);
    } catch (const SocketClosedException& e) {
        return closeFinished(client, e.graceful);
    } catch (const SocketException& e) {
        if (clientLog().isErrorEnabled()) {
            clientLog().error("Client %s socket exception: %s", client.address().c_str(), e.what());
        }
        return closeAfterError(client, false);
    } catch (const Exception& e) {
        return closeFailed(client, e.what());
    } catch (const std::bad_alloc&) {
        // The request, or what it asked for, is too large for this machine; others may not be. It
        // is dropped before anything else, which needs memory too.
        client.dropInput();
        return closeFailed(client, IOException("not enough memory", ENOMEM).what());
    }
}

Server::Next Server::serveRequest(Connection& client) {
    switch (receiveRequest(client)) {
        case Received::LineEnd:
        case Received::Nothing:
            return Next::Serve;
        case Received::End:
            return closeFinished(client, false);
        case Received::Request:
            break;
    }
    if (isLogged(log4cpp::Priority::DEBUG)) {
        logRequest(request_);
    }
    std::string_view lines = request_;
    const std::optional<std::string> cmd = takeLine(lines);
    if (!cmd) {
        clientLog().warn("Empty request from %s", client.address().c_str());
        return Next::Serve;
    }
    if (*cmd == shutdownCommand && isAllowed(*cmd)) {
        clientLog().info("SHUTDOWN command was received");
        return Next::Stop;
    }
    params_.open(lines);
    processClientCommand(client.sock(), *cmd, params_);
    return Next::Serve;
}

// Leaves the client ready for its next turn: whether it is still readable, and with no more memory
// than it needs.
void Server::settle(Connection& client) {
    if (client.descriptor() == -1) {
        client.consume(client.unread().size());
    }
    client.putBack(input_);
    if (client.unread().size() > smallRest || input_.capacity() > largeSize) {
        expectFreedMemory();
    }
    if (client.descriptor() == -1 || !client.isDrained()) {
        return;
    }
    if (client.takeNeedsRearm()) {
        watch_.rearm(client.sock());
    }
    if (client.unread().empty()) {
        clients.markDrained(client);
    }
}

// Closes a connection that the client has ended. After a regular end (0 bytes received) no
// half-close is needed: nothing can arrive any more that would make close(2) reset the connection.
Server::Next Server::closeFinished(Connection& client, bool graceful) {
    if (isLogged(log4cpp::Priority::INFO)) {
        clientLog().info("Client %s has closed connection", client.address().c_str());
    }
    return closeAfterError(client, graceful);
}

Server::Next Server::closeFailed(Connection& client, const char* reason) {
    client.dropInput();
    expectFreedMemory();
    clientLog().info("Closing client %s because it has caused exception: %s",
                     client.address().c_str(), reason);
    return closeAfterError(client, false);
}

// A page in a browser cannot stop the server by going away.
Server::Next Server::closeAfterError(const Connection& client, bool graceful) {
    if (client.isForeign) {
        closeSocket(client.sock(), graceful);
        return Next::Serve;
    }
    return errorCloseSocket(client.sock(), graceful) ? Next::Serve : Next::Stop;
}

// Answers and closes a connection that no application has made.
Server::Next Server::refuse(Connection& client, const std::string& line) {
    client.dropInput();
    expectFreedMemory();
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextForeignWarning_) {
        nextForeignWarning_ = now + foreignWarningPeriod;
        clientLog().warn("Client %s: refused, not an application's request: '%s'",
                         client.address().c_str(), line.c_str());
    }
    try {
        sendFatalError(client.sock(), line);
        dropReceived(client.descriptor());
    } catch (const std::exception&) {
        // It is closed below in any case.
    }
    closeSocket(client.sock(), true);
    return Next::Serve;
}

bool Server::isAllowed(const std::string& cmd) const {
    const auto& allowed = options.allowedCommands;
    return !allowed || std::find(allowed->begin(), allowed->end(), cmd) != allowed->end();
}

void Server::processClientCommand(int sock, const std::string& cmd, std::istream& /*params*/) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.cmd");
    if (log.isInfoEnabled()) {
        log.info("Client %s: %s", addressOf(sock).c_str(), cmd.c_str());
    }
}

void Server::sendFatalError(int sock, const std::string& cmd) {
    const std::string reply = "<fatalError cmd='" + cmd + "'/>";
    sendResponse(sock, reply.data(), static_cast<int>(reply.size()));
}

}  // namespace corvane
