#include "bench/common/net.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace corvane::bench {

namespace {

constexpr std::size_t RECEIVE_BLOCK = 256UL * 1024;
constexpr std::size_t CHECKED_BYTES = 512;
constexpr int BACKLOG = 128;

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<in_port_t>(port));
    return address;
}

Descriptor newSocket() {
    Descriptor created(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (created.get() == -1) {
        throwErrno("socket");
    }
    return created;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        close();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

void Descriptor::close() {
    if (descriptor_ != -1) {
        ::close(std::exchange(descriptor_, -1));
    }
}

void throwErrno(const char* action) {
    throw std::system_error(errno, std::generic_category(), action);
}

Descriptor connectTo(int port) {
    Descriptor connection = newSocket();
    const sockaddr_in address = loopback(port);
    if (::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
        0) {
        throwErrno("connect");
    }
    return connection;
}

Descriptor listenOnLoopback(int& port) {
    Descriptor listener = newSocket();
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener.get(), generic, length) != 0 || ::listen(listener.get(), BACKLOG) != 0 ||
        ::getsockname(listener.get(), generic, &length) != 0) {
        throwErrno("listen");
    }
    port = ntohs(address.sin_port);
    return listener;
}

void setNoDelay(int socket) {
    const int on = 1;
    if (::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) != 0) {
        throwErrno("setsockopt");
    }
}

void sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent == -1) {
            throwErrno("send");
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

iovec asPart(std::string_view bytes) { return {const_cast<char*>(bytes.data()), bytes.size()}; }

void sendAll(int socket, std::span<iovec> parts) {
    while (!parts.empty()) {
        msghdr message{};
        message.msg_iov = parts.data();
        message.msg_iovlen = parts.size();
        const ssize_t result = ::sendmsg(socket, &message, MSG_NOSIGNAL);
        if (result == -1) {
            throwErrno("sendmsg");
        }
        auto sent = static_cast<std::size_t>(result);
        while (!parts.empty() && sent >= parts.front().iov_len) {
            sent -= parts.front().iov_len;
            parts = parts.subspan(1);
        }
        if (!parts.empty()) {
            parts.front().iov_base = static_cast<char*>(parts.front().iov_base) + sent;
            parts.front().iov_len -= sent;
        }
    }
}

ReplyReader::ReplyReader(char terminator, std::string expected)
    : terminator_(terminator), expected_(std::move(expected)), block_(RECEIVE_BLOCK) {}

std::size_t ReplyReader::receive(int socket) {
    std::size_t size = 0;
    while (!receiveSome(socket, size)) {
    }
    return size;
}

bool ReplyReader::receiveSome(int socket, std::size_t& size) {
    const ssize_t result = ::recv(socket, block_.data(), block_.size(), 0);
    if (result == -1) {
        throwErrno("recv");
    }
    if (result == 0) {
        throw std::runtime_error("the server closed the connection before its reply was complete");
    }
    const auto received = static_cast<std::size_t>(result);
    if (size == 0) {
        check({block_.data(), received});
    }
    size += received;
    return block_[received - 1] == terminator_;
}

void ReplyReader::check(std::string_view beginning) const {
    beginning = beginning.substr(0, CHECKED_BYTES);
    if (beginning.find(expected_) == std::string_view::npos) {
        throw std::runtime_error("unexpected reply: " + std::string(beginning));
    }
}

}  // namespace corvane::bench
