#include "support/client_socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "platform/system.h"
#include "support/wait_until.h"

namespace corvane::test {
namespace {

constexpr std::size_t block = 262'144;

[[noreturn]] void fail(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

sockaddr_in loopback(int host, int port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK - 1 + static_cast<in_addr_t>(host));
    place.sin_port = htons(static_cast<in_port_t>(port));
    return place;
}

bool waitFor(int sock, short events, int milliseconds) {
    pollfd wanted{sock, events, 0};
    return ::poll(&wanted, 1, milliseconds) == 1;
}

// Some systems heed neither flag of sendWithoutWaiting(), but the socket's own.
void neitherWaitNorSignalWhenSending(int sock) {
    ::fcntl(sock, F_SETFL, ::fcntl(sock, F_GETFL) | O_NONBLOCK);
#ifdef SO_NOSIGPIPE
    const int on = 1;
    ::setsockopt(sock, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
}

constexpr int patienceInMilliseconds =
    static_cast<int>(std::chrono::milliseconds(patience).count());

}  // namespace

ClientSocket::ClientSocket(int port, int receiveBuffer, int host)
    : number_(::socket(AF_INET, SOCK_STREAM, 0)) {
    ::fcntl(number_, F_SETFD, FD_CLOEXEC);
    if (receiveBuffer > 0) {
        ::setsockopt(number_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    const int on = 1;
    ::setsockopt(number_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const sockaddr_in from = loopback(host, 0);
    const sockaddr_in server = loopback(1, port);
    if ((host != 1 &&
         ::bind(number_, reinterpret_cast<const sockaddr*>(&from), sizeof from) != 0) ||
        ::connect(number_, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) {
        const int error = errno;
        close();
        errno = error;
        fail("cannot connect");
    }
    neitherWaitNorSignalWhenSending(number_);
    sockaddr_in own{};
    socklen_t length = sizeof own;
    ::getsockname(number_, reinterpret_cast<sockaddr*>(&own), &length);
    address_ = "127.0.0." + std::to_string(host) + ":" + std::to_string(ntohs(own.sin_port));
}

ClientSocket::ClientSocket(ClientSocket&& other) noexcept
    : number_(std::exchange(other.number_, -1)),
      address_(std::move(other.address_)),
      received_(std::move(other.received_)) {}

ClientSocket& ClientSocket::operator=(ClientSocket&& other) noexcept {
    std::swap(number_, other.number_);
    std::swap(address_, other.address_);
    std::swap(received_, other.received_);
    return *this;
}

void ClientSocket::send(std::string_view bytes) {
    if (!trySend(bytes)) {
        fail("cannot send");
    }
}

void ClientSocket::sendUrgent(char byte) {
    if (::send(number_, &byte, 1, MSG_OOB) != 1) {
        fail("cannot send out of band");
    }
}

bool ClientSocket::trySend(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t sent = sendWithoutWaiting(bytes);
        bytes.remove_prefix(sent);
        if (sent == 0 && (errno != EAGAIN || !waitFor(number_, POLLOUT, patienceInMilliseconds))) {
            return false;
        }
    }
    return true;
}

std::size_t ClientSocket::sendWithoutWaiting(std::string_view bytes) {
    const ssize_t sent =
        ::send(number_, bytes.data(), bytes.size(), platform::sendFlags() | MSG_DONTWAIT);
    return sent > 0 ? static_cast<std::size_t>(sent) : 0;
}

std::string ClientSocket::reply() {
    std::optional<std::string> text = tryReply();
    if (!text) {
        throw std::runtime_error("the connection ended, got: " + received_);
    }
    return *std::move(text);
}

std::optional<std::string> ClientSocket::tryReply() {
    std::size_t searched = 0;
    std::size_t end = std::string::npos;
    while ((end = received_.find('\0', searched)) == std::string::npos) {
        searched = received_.size();
        if (!receiveMore()) {
            return std::nullopt;
        }
    }
    std::string text = received_.substr(0, end);
    received_.erase(0, end + 1);
    return text;
}

std::string ClientSocket::request(std::string_view text) {
    send(std::string(text) + '\0');
    return reply();
}

bool ClientSocket::hasSomething(int milliseconds) const {
    return !received_.empty() || waitFor(number_, POLLIN, milliseconds);
}

std::string ClientSocket::untilEnd() {
    while (receiveMore()) {
    }
    return std::exchange(received_, {});
}

bool ClientSocket::receiveMore() { return receive(block) > 0; }

std::size_t ClientSocket::take(std::size_t most) {
    if (received_.empty()) {
        receive(most);
    }
    const std::size_t taken = std::min(most, received_.size());
    received_.erase(0, taken);
    return taken;
}

std::size_t ClientSocket::receive(std::size_t most) {
    if (!waitFor(number_, POLLIN, patienceInMilliseconds)) {
        throw std::runtime_error("nothing received for a long time");
    }
    static thread_local std::array<char, block> bytes;
    const ssize_t count = ::recv(number_, bytes.data(), std::min(most, bytes.size()), 0);
    if (count > 0) {
        received_.append(bytes.data(), static_cast<std::size_t>(count));
        return static_cast<std::size_t>(count);
    }
    return 0;
}

bool ClientSocket::wasReset() {
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(number_, SOL_SOCKET, SO_ERROR, &error, &length);
    return error != 0;
}

void ClientSocket::finishSending() { ::shutdown(number_, SHUT_WR); }

void ClientSocket::close() {
    if (number_ != -1) {
        ::close(std::exchange(number_, -1));
    }
}

void ClientSocket::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(number_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close();
}

}  // namespace corvane::test
