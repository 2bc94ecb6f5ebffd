// Sending a reply: its text and the terminating zero byte leave in one call, so that the client
// never waits for a delayed acknowledgement between the two.
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

#include "log/log.h"
#include "platform/system.h"
#include "server/server.h"
#include "server/socket_exception.h"

namespace corvane {
namespace {

constexpr char zeroByte = '\0';
constexpr std::string_view terminator(&zeroByte, 1);

// Drops `count` bytes from the front of the pieces.
std::span<std::string_view> advance(std::span<std::string_view> pieces, std::size_t count) {
    while (!pieces.empty() && count >= pieces.front().size()) {
        count -= pieces.front().size();
        pieces = pieces.subspan(1);
    }
    if (!pieces.empty()) {
        pieces.front().remove_prefix(count);
    }
    return pieces;
}

ssize_t sendOnce(int sock, std::span<const std::string_view> pieces) {
    constexpr std::size_t mostAtOnce = 8;  // a reply has three: a large text and what surrounds it
    const int flags = MSG_DONTWAIT | platform::sendFlags();
    if (pieces.size() == 1) {
        return ::send(sock, pieces.front().data(), pieces.front().size(), flags);
    }
    std::array<iovec, mostAtOnce> gathered;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const std::size_t count = std::min(pieces.size(), mostAtOnce);
    std::transform(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(count),
                   gathered.begin(), [](std::string_view text) {
                       return iovec{const_cast<char*>(text.data()),  // NOLINT: sendmsg only reads
                                    text.size()};
                   });
    msghdr message{};
    message.msg_iov = gathered.data();
    message.msg_iovlen = static_cast<decltype(message.msg_iovlen)>(count);
    return ::sendmsg(sock, &message, flags);
}

}  // namespace

void Server::sendTerminated(int sock, std::span<std::string_view> pieces) {
    flushLog();
    const Connection* const client = clients.find(sock);
    if (client == nullptr) {
        throw SocketException("send() error", EBADF);  // a termination signal has closed it
    }
    std::size_t size = 0;
    for (const std::string_view text : pieces) {
        size += text.size();
    }
    if (size > largeSize) {
        expectFreedMemory();
    }
    sendAll(*client, pieces);
}

// The time limit holds for the whole rest of the reply from the first wait on.
void Server::sendAll(const Connection& client, std::span<std::string_view> pieces) const {
    Deadline deadline;
    while (!pieces.empty()) {
        const ssize_t sent = sendOnce(client.descriptor(), pieces);
        if (sent == -1 && (errno == EAGAIN || errno == EINTR)) {
            if (!deadline) {
                deadline = deadlineAfter(options.requestTimeout);
            }
            if (!waitForSocket(client.descriptor(), Direction::Write, deadline)) {
                ::shutdown(client.descriptor(), SHUT_RDWR);  // nothing may follow half of a reply
                throw SocketException("send() error", ETIMEDOUT);
            }
            continue;
        }
        if (sent == -1 && errno == ECONNRESET) {
            throw SocketClosedException(client, false);
        }
        checkSendError(client.sock(), sent);
        pieces = advance(pieces, static_cast<std::size_t>(sent));
    }
}

void Server::sendResponse(int sock, const char* data, int length) {
    std::array<std::string_view, 2> pieces{std::string_view(data, static_cast<std::size_t>(length)),
                                           terminator};
    sendTerminated(sock, pieces);
}

}  // namespace corvane
