#include "server/connection.h"

#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "server/address.h"
#include "server/socket_exception.h"

namespace corvane {
namespace {

// Received at a time; a test fills it exactly. With larger blocks the server drains the socket
// faster than a client fills it, and sleeps and wakes between two of them.
constexpr std::size_t blockSize = std::size_t{32} * 1024;

}  // namespace

Connection::Connection(FileDesc sock, const sockaddr_in& peer, std::uint64_t number)
    : sock_(std::move(sock)),
      name_(sock_),
      number_(number),
      address_(peer.sin_family == AF_INET ? formatAddress(peer) : unknownAddress) {}

void Connection::halfClose() const { ::shutdown(sock_, SHUT_WR); }

int Connection::close() {
    address_ = unknownAddress;
    return sock_.close() == 0 ? 0 : errno;
}

void Connection::dropInput() {
    input_.clearAndShrink(0);
    consumed_ = 0;
}

Connection::Input Connection::receive() {
    input_.dropFront(consumed_);
    consumed_ = 0;
    const ssize_t received = ::recv(sock_, input_.room(blockSize), blockSize, MSG_DONTWAIT);
    if (received > 0) {
        input_.commit(static_cast<std::size_t>(received));
        isDrained_ = static_cast<std::size_t>(received) < blockSize;
        return Input::Bytes;
    }
    if (received == 0) {
        return Input::End;
    }
    if (errno == ECONNRESET) {
        throw SocketClosedException(*this, false);
    }
    if (errno != EAGAIN && errno != EINTR) {
        checkRecvStatus(sock_, received);
    }
    isDrained_ = errno == EAGAIN;
    return Input::Nothing;
}

void Connection::borrow(ByteBuffer& buffer) {
    if (unread().empty()) {
        dropInput();
        std::swap(input_, buffer);
        isBorrowed_ = true;
    }
}

void Connection::putBack(ByteBuffer& buffer) {
    if (!isBorrowed_ && !unread().empty()) {
        return;
    }
    ByteBuffer rest;
    rest.append(unread());
    if (input_.capacity() > buffer.capacity()) {
        std::swap(input_, buffer);
        buffer.clear();
    }
    input_ = std::move(rest);
    consumed_ = 0;
    isBorrowed_ = false;
}

bool Connection::takeNeedsRearm() { return std::exchange(needsRearm_, false); }

}  // namespace corvane
