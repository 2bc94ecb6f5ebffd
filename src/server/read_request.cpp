// Reading a request. Whatever has arrived is received at once; what follows the terminator stays
// unread until the client's next turn.
#include <cerrno>
#include <log4cpp/Category.hh>

#include "log/log.h"
#include "server/request_guard.h"
#include "server/server.h"
#include "server/socket_exception.h"
#include "text/find_byte.h"
#include "text/strings.h"

namespace corvane {
namespace {

log4cpp::Category& requestLog() {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.readrequest");
    return log;
}

bool isTerminator(char c) { return c == '\0' || c == '\x01'; }

ByteVector terminatorsAmong(ByteVector bytes) { return bytesEqual(bytes & 0xFE, '\0'); }

}  // namespace

// Connections end as often as they begin: that is a result, not an exception, which would cost as
// much as all the rest of a connection's end.
Server::Received Server::receiveRequest(Connection& client) {
    client.deadline.reset();
    bool isFirstLineKnown = options.allowHttp;
    std::size_t searched = 0;
    while (true) {
        if (searched == client.unread().size()) {
            const Connection::Input input = receiveMore(client);
            if (input != Connection::Input::Bytes) {
                return input == Connection::Input::End ? Received::End : Received::Nothing;
            }
        }
        if (takeLineEnd(client)) {
            return Received::LineEnd;
        }
        const bool isComplete = findEnd(client, searched);
        isFirstLineKnown = isFirstLineKnown || checkFirstLine(client, searched, isComplete);
        checkSize();
        if (isComplete) {
            takeRequest(client);
            return Received::Request;
        }
        if (searched == 0) {
            client.deadline = deadlineAfter(options.requestTimeout);
        }
        searched = request_.size();
    }
}

// A request cannot begin with CR or LF: the byte is consumed and stands for itself.
bool Server::takeLineEnd(Connection& client) const {
    const std::string_view first = client.unread().substr(0, 1);
    if (first != "\r" && first != "\n") {
        return false;
    }
    logBytes(first);
    client.consume(first.size());
    return true;
}

// Looks for the terminator behind the bytes `searched` before. Returns whether it is there;
// request_ is what has come before it.
bool Server::findEnd(const Connection& client, std::size_t searched) {
    const std::string_view bytes = client.unread();
    const std::size_t end =
        searched + findByte(bytes.substr(searched), terminatorsAmong, isTerminator);
    logBytes(bytes.substr(searched, end + 1 - searched));
    request_ = bytes.substr(0, end);
    return end < bytes.size();
}

void Server::takeRequest(Connection& client) const {
    client.consume(request_.size() + 1);
    if (isLogged(log4cpp::Priority::DEBUG)) {
        requestLog().debug("request size %d", static_cast<int>(request_.size()));
    }
}

// Receives the next bytes of a request; once it has begun, they are waited for.
Connection::Input Server::receiveMore(Connection& client) {
    const bool hasBegun = !client.unread().empty();
    if (hasBegun) {
        deliverPendingSignals();  // a client that sends without a pause lets no wait happen
    }
    while (true) {
        if (hasPassed(client.deadline)) {
            throw Exception(format("request is not complete after %d s", options.requestTimeout));
        }
        const Connection::Input input = client.receive();
        if (input != Connection::Input::Nothing || !hasBegun) {
            return input;
        }
        static_cast<void>(waitForSocket(client.descriptor(), Direction::Read, client.deadline));
    }
}

// Throws ForeignRequest when the request is not an application's. Returns whether that is settled:
// the first line, whose end is not among the bytes `searched` before, is over.
bool Server::checkFirstLine(Connection& client, std::size_t searched, bool isComplete) const {
    if (isTlsGreeting(client.unread())) {
        throw ForeignRequest("TLS");
    }
    if (isComplete && isStunMessage(client.unread())) {
        throw ForeignRequest("STUN");
    }
    client.isForeign = isHttpBeginning(request_);
    const std::size_t end = request_.find('\n', searched);
    if (end == std::string_view::npos && !isComplete) {
        return false;
    }
    std::string_view line = request_.substr(0, end);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (client.isForeign || (end != std::string_view::npos && isHttpRequestLine(line))) {
        throw ForeignRequest(line);
    }
    return true;
}

void Server::checkSize() {
    if (request_.size() > largeSize) {
        expectFreedMemory();
    }
    if (options.maxRequest > 0 && request_.size() > static_cast<std::size_t>(options.maxRequest)) {
        throw Exception(format("request is longer than %d bytes", options.maxRequest));
    }
}

bool Server::readRequest(int sock, ByteBuffer& out) {
    Connection* const client = clients.find(sock);
    if (client == nullptr) {
        throw SocketException("recv() error", EBADF);
    }
    out.clear();
    while (true) {
        switch (receiveRequest(*client)) {
            case Received::Request:
                out.append(request_);
                return true;
            case Received::LineEnd:
                return false;
            case Received::End:
                throw SocketClosedException(*client, true);
            case Received::Nothing:
                static_cast<void>(waitForSocket(sock, Direction::Read, std::nullopt));
        }
    }
}

void Server::logBytes(std::string_view bytes) const {
    if (options.debugRequestRead && isLogged(log4cpp::Priority::DEBUG)) {
        for (const char c : bytes) {
            const int value = static_cast<signed char>(c);  // NOLINT: logged as a signed number
            requestLog().debug("request byte %d (0x%#x)", value, static_cast<unsigned>(value));
        }
    }
}

}  // namespace corvane
