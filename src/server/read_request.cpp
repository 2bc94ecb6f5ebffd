// Reading a request. The bytes are looked at first (MSG_PEEK) and then exactly those up to the
// terminator are taken, so that a request that follows stays in the socket, where select sees it.
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <log4cpp/Category.hh>

#include "platform/system.h"
#include "server/request_guard.h"
#include "server/server.h"
#include "server/socket_exception.h"
#include "text/log.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::size_t firstLook = std::size_t{16} * 1024;
constexpr std::size_t laterLook = std::size_t{1024} * 1024;
constexpr std::size_t parameterBuffer = 1024;

log4cpp::Category& requestLog() {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.readrequest");
    return log;
}

// The place of the first 0x00 or 0x01, or the size when there is none.
std::size_t findTerminator(std::string_view bytes) {
    std::size_t end = bytes.size();
    for (const char terminator : {'\0', '\x01'}) {
        if (const void* found = std::memchr(bytes.data(), terminator, end); found != nullptr) {
            end = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
        }
    }
    return end;
}

bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

std::string withoutLineEnd(std::string_view line) {
    while (!line.empty() && isLineEnd(line.back())) {
        line.remove_suffix(1);
    }
    return std::string(line);
}

}  // namespace

bool Server::readRequest(int sock, ByteBuffer& out) {
    const Received received = receiveRequest(sock, out);
    if (received == Received::End) {
        throw SocketClosedException(sock, true);
    }
    return received == Received::Request;
}

// Connections end as often as they begin: that is a result, not an exception, which would cost as
// much as all the rest of a connection's end.
Server::Received Server::receiveRequest(int sock, ByteBuffer& out) {
    out.clear();
    Deadline deadline;
    bool firstLineChecked = allowHttp;
    while (true) {
        const std::size_t before = out.size();
        const std::size_t seen = receiveChunk(sock, out, deadline);
        if (seen == 0) {
            return Received::End;
        }
        const std::string_view chunk(out.data() + before, seen);
        if (before == 0 && isLineEnd(chunk.front())) {
            platform::discardReceived(sock, 1);
            logBytes(chunk.substr(0, 1));
            return Received::LineEnd;
        }
        const std::size_t end = findTerminator(chunk);
        const bool complete = end < seen;
        const std::size_t taken = complete ? end + 1 : seen;
        platform::discardReceived(sock, taken);
        logBytes(chunk.substr(0, taken));
        out.commit(end);
        if (out.size() > largeSize) {
            expectFreedMemory();
        }
        firstLineChecked = firstLineChecked || checkFirstLine(out.view(), before);
        if (maxRequest > 0 && out.size() > static_cast<std::size_t>(maxRequest)) {
            throw Exception(format("request is longer than %d bytes", maxRequest));
        }
        if (complete) {
            if (isLogged(log4cpp::Priority::DEBUG)) {
                requestLog().debug("request size %d", static_cast<int>(out.size()));
            }
            return Received::Request;
        }
        if (before == 0) {
            deadline = deadlineAfter(requestTimeout);
        }
    }
}

// Waits for the next bytes and looks at them, behind what `out` holds. Returns how many they are; 0
// when the client has closed the connection.
std::size_t Server::receiveChunk(int sock, ByteBuffer& out, const Deadline& deadline) const {
    const std::size_t look = out.size() == 0 ? firstLook : laterLook;
    if (out.size() > 0) {
        deliverPendingSignals();  // a client that sends without a pause lets no wait happen
    }
    while (true) {
        if (deadline && std::chrono::steady_clock::now() >= *deadline) {
            throw Exception(format("request is not complete after %d s", requestTimeout));
        }
        const ssize_t seen = ::recv(sock, out.room(look), look, MSG_PEEK | MSG_DONTWAIT);
        if (seen == -1 && (errno == EAGAIN || errno == EINTR)) {
            static_cast<void>(waitForSocket(sock, Direction::Read, deadline));
            continue;
        }
        if (seen != 0) {
            checkRecvStatus(sock, seen);
        }
        return static_cast<std::size_t>(seen);
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
    if (debugRequestRead && isLogged(log4cpp::Priority::DEBUG)) {
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
