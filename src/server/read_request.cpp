// Reading a request. Whatever has arrived is received at once; what follows the terminator is kept
// for the client's next turn.
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <log4cpp/Category.hh>

#include "log/log.h"
#include "server/request_guard.h"
#include "server/server.h"
#include "server/socket_exception.h"
#include "text/find_byte.h"
#include "text/strings.h"

namespace corvane {
namespace {

// Received at a time; a test fills it exactly. With larger blocks the server empties the socket
// faster than a client fills it, and sleeps and wakes between two of them.
constexpr std::size_t blockSize = std::size_t{32} * 1024;
constexpr std::size_t parameterBuffer = 1024;

log4cpp::Category& requestLog() {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.readrequest");
    return log;
}

bool isTerminator(char c) { return c == '\0' || c == '\x01'; }

ByteVector terminatorsAmong(ByteVector bytes) { return bytesEqual(bytes & 0xFE, '\0'); }

bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

std::string withoutLineEnd(std::string_view line) {
    while (!line.empty() && isLineEnd(line.back())) {
        line.remove_suffix(1);
    }
    return std::string(line);
}

}  // namespace

bool Server::readRequest(int sock, ByteBuffer& out) {
    while (true) {
        switch (receiveRequest(sock, out)) {
            case Received::Request:
                return true;
            case Received::LineEnd:
                return false;
            case Received::End:
                throw SocketClosedException(sock, true);
            case Received::Nothing:
                static_cast<void>(waitForSocket(sock, Direction::Read, std::nullopt));
        }
    }
}

// Connections end as often as they begin: that is a result, not an exception, which would cost as
// much as all the rest of a connection's end.
Server::Received Server::receiveRequest(int sock, ByteBuffer& out) {
    out.clear();
    Deadline deadline;
    bool firstLineChecked = options.allowHttp;
    while (true) {
        const std::size_t before = out.size();
        const std::string_view surplus = surplus_.of(sock);
        std::string_view bytes = surplus;
        if (surplus.empty()) {
            const std::optional<std::size_t> size = receive(sock, out, deadline);
            if (!size) {
                return Received::Nothing;
            }
            bytes = {out.data() + before, *size};
        }
        if (bytes.empty()) {
            return Received::End;
        }
        const bool onlyLineEnd = before == 0 && isLineEnd(bytes.front());
        const std::size_t end = onlyLineEnd ? 0 : findByte(bytes, terminatorsAmong, isTerminator);
        const bool hasEnd = end < bytes.size();  // its own, or that of a lone line end
        const std::size_t taken = hasEnd ? end + 1 : end;
        logBytes(bytes.substr(0, taken));
        if (surplus.empty()) {
            out.commit(end);
            if (taken < bytes.size()) {
                surplus_.keep(sock, bytes.substr(taken));
            } else if (hasEnd && taken < blockSize) {
                readable_.emptied(sock);
            }
        } else {
            out.append(bytes.substr(0, end));
            surplus_.take(sock, taken);
        }
        if (onlyLineEnd) {
            return Received::LineEnd;
        }
        if (out.size() > largeSize) {
            expectFreedMemory();
        }
        firstLineChecked = firstLineChecked || checkFirstLine(out.view(), before);
        if (options.maxRequest > 0 && out.size() > static_cast<std::size_t>(options.maxRequest)) {
            throw Exception(format("request is longer than %d bytes", options.maxRequest));
        }
        if (hasEnd) {
            if (isLogged(log4cpp::Priority::DEBUG)) {
                requestLog().debug("request size %d", static_cast<int>(out.size()));
            }
            return Received::Request;
        }
        if (before == 0) {
            deadline = deadlineAfter(options.requestTimeout);
        }
    }
}

// Receives the next bytes behind what `out` holds and returns how many they are: 0 when the client
// has closed the connection, none when nothing of a request has arrived yet. Once a request has
// begun, its next bytes are waited for.
std::optional<std::size_t> Server::receive(int sock, ByteBuffer& out, const Deadline& deadline) {
    const bool hasBegun = out.size() > 0;
    if (hasBegun) {
        deliverPendingSignals();  // a client that sends without a pause lets no wait happen
    }
    while (true) {
        if (deadline && std::chrono::steady_clock::now() >= *deadline) {
            throw Exception(format("request is not complete after %d s", options.requestTimeout));
        }
        const ssize_t received = ::recv(sock, out.room(blockSize), blockSize, MSG_DONTWAIT);
        if (received > 0) {
            return static_cast<std::size_t>(received);
        }
        if (received == 0) {
            return 0;
        }
        if (errno != EAGAIN && errno != EINTR) {
            checkRecvStatus(sock, received);
        }
        if (!hasBegun) {
            if (errno == EAGAIN) {
                readable_.emptied(sock);
            }
            return std::nullopt;
        }
        static_cast<void>(waitForSocket(sock, Direction::Read, deadline));
    }
}

// Throws ForeignRequest when the request is not an application's. Returns whether that is settled:
// the first line is complete. Its end is not among the `alreadySearched` bytes.
bool Server::checkFirstLine(std::string_view request, std::size_t alreadySearched) {
    if (isTlsGreeting(request)) {
        throw ForeignRequest("TLS");
    }
    const std::size_t end = request.find('\n', alreadySearched);
    if (end == std::string_view::npos) {
        return false;
    }
    std::string_view line = request.substr(0, end);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (isHttpRequestLine(line)) {
        throw ForeignRequest(line);
    }
    return true;
}

void Server::logBytes(std::string_view bytes) const {
    if (options.debugRequestRead && isLogged(log4cpp::Priority::DEBUG)) {
        for (const char c : bytes) {
            const int value = static_cast<signed char>(c);  // NOLINT: logged as a signed number
            requestLog().debug("request byte %d (0x%#x)", value, static_cast<unsigned>(value));
        }
    }
}

std::string Server::getline(std::istream& in) {
    std::array<char, parameterBuffer> line;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    if (!in.getline(line.data(), line.size())) {
        return "";
    }
    return withoutLineEnd(line.data());
}

std::optional<std::string> Server::takeLine(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    if (text.empty() || length >= parameterBuffer) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return withoutLineEnd(line);
}

void checkRecvStatus(int sock, long result) {
    if (result > 0) {
        return;
    }
    if (result == 0) {
        throw SocketClosedException(sock, true);
    }
    if (errno == ECONNRESET) {
        throw SocketClosedException(sock, false);
    }
    throw SocketException("recv() error", errno);
}

}  // namespace corvane
