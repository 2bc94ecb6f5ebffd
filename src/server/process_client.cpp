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
#include "server/address.h"
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

void logFailure(int sock, const char* reason) {
    if (clientLog().isInfoEnabled()) {
        clientLog().info("Closing client %s because it has caused exception: %s",
                         formatAddress(sock).c_str(), reason);
    }
}

}  // namespace

bool Server::processClient(int sock) {
    const LogBatch linesOfOneRequest;
    try {
        return serveRequest(sock);
    } catch (const ForeignRequest& e) {
        return refuseForeignRequest(sock, e.line);
    } catch (const SocketClosedException& e) {
        return closeFinished(sock, e.graceful);
    } catch (const SocketException& e) {
        if (clientLog().isErrorEnabled()) {
            clientLog().error("Client %s socket exception: %s", formatAddress(sock).c_str(),
                              e.what());
        }
    } catch (const Exception& e) {
        dropRequest();
        logFailure(sock, e.what());
    } catch (const std::bad_alloc&) {
        // The request, or what it asked for, is too large for this machine; others may not be.
        dropRequest();
        logFailure(sock, IOException("not enough memory", ENOMEM).what());
    }
    return errorCloseSocket(sock, false);
}

bool Server::serveRequest(int sock) {
    switch (receiveRequest(sock, request_)) {
        case Received::LineEnd:
        case Received::Nothing:
            return true;
        case Received::End:
            return closeFinished(sock, false);
        case Received::Request:
            break;
    }
    if (isLogged(log4cpp::Priority::DEBUG)) {
        logRequest(request_.view());
    }
    std::string_view lines = request_.view();
    const std::optional<std::string> cmd = takeLine(lines);
    if (!cmd) {
        if (clientLog().isWarnEnabled()) {
            clientLog().warn("Empty request from %s", formatAddress(sock).c_str());
        }
        return true;
    }
    if (*cmd == shutdownCommand && isAllowed(*cmd)) {
        clientLog().info("SHUTDOWN command was received");
        return false;
    }
    params_.open(lines);
    processClientCommand(sock, *cmd, params_);
    return true;
}

// Frees the request before anything else is done: it may be what the memory is short for.
void Server::dropRequest() {
    request_.clearAndShrink(0);
    expectFreedMemory();
}

// Closes a connection that the client has ended. After a regular end (0 bytes received) no
// half-close is needed: nothing can arrive any more that would make close(2) reset the connection.
bool Server::closeFinished(int sock, bool graceful) {
    if (isLogged(log4cpp::Priority::INFO)) {
        clientLog().info("Client %s has closed connection", formatAddress(sock).c_str());
    }
    return errorCloseSocket(sock, graceful);
}

// Answers and closes a connection that no application has made; it does not count as an
// application's disconnection, so that a web page cannot stop the server.
bool Server::refuseForeignRequest(int sock, const std::string& line) {
    dropRequest();
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextForeignWarning_) {
        nextForeignWarning_ = now + foreignWarningPeriod;
        clientLog().warn("Client %s: refused, not an application's request: '%s'",
                         formatAddress(sock).c_str(), line.c_str());
    }
    try {
        sendFatalError(sock, line);
        dropReceived(sock);
    } catch (const std::exception&) {
        // It is closed below in any case.
    }
    closeSocket(clients, sock, true);
    return true;
}

bool Server::isAllowed(const std::string& cmd) const {
    const auto& allowed = options.allowedCommands;
    return !allowed || std::find(allowed->begin(), allowed->end(), cmd) != allowed->end();
}

void Server::processClientCommand(int sock, const std::string& cmd, std::istream& /*params*/) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.cmd");
    if (log.isInfoEnabled()) {
        log.info("Client %s: %s", formatAddress(sock).c_str(), cmd.c_str());
    }
}

void Server::sendFatalError(int sock, const std::string& cmd) {
    const std::string reply = "<fatalError cmd='" + cmd + "'/>";
    sendResponse(sock, reply.data(), static_cast<int>(reply.size()));
}

}  // namespace corvane
