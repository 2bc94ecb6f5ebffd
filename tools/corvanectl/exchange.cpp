#include "corvanectl/exchange.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/system.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::size_t receiveChunk = std::size_t{64} * 1024;

sockaddr_in addressOf(int (*ask)(int, sockaddr*, socklen_t*), int sock) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ask(sock, reinterpret_cast<sockaddr*>(&address), &size);
    return address;
}

}  // namespace

Connection::Connection(const Endpoint& endpoint, Observer observer)
    : where_(format("%s:%d", endpoint.host.c_str(), endpoint.port)),
      timeout_(endpoint.timeout),
      observer_(std::move(observer)),
      deadline_(deadlineAfter(endpoint.timeout)),
      sock_(::socket(AF_INET, SOCK_STREAM, 0)) {
    if (sock_ == -1) {
        fail("cannot connect to", errno);
    }
    ::fcntl(sock_, F_SETFL, O_NONBLOCK);
    connectTo(endpoint);
}

void Connection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(sock_, bytes.data(), bytes.size(), platform::sendFlags());
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            sent_ += static_cast<std::size_t>(sent);
            observe();
        } else if (errno == EAGAIN || errno == EINTR) {
            wait(Direction::Write);
        } else if (errno == EPIPE || errno == ECONNRESET) {
            return;
        } else {
            fail("cannot send to", errno);
        }
    }
}

std::optional<std::string> Connection::receive() {
    std::string reply = std::exchange(unread_, {});
    for (std::size_t searched = 0;;) {
        if (const std::size_t end = reply.find('\0', searched); end != std::string::npos) {
            unread_ = reply.substr(end + 1);
            reply.resize(end);
            return reply;
        }
        searched = reply.size();
        reply.resize(searched + receiveChunk);
        const ssize_t got = ::recv(sock_, reply.data() + searched, receiveChunk, 0);
        reply.resize(searched + static_cast<std::size_t>(got > 0 ? got : 0));
        if (got == 0 || (got == -1 && errno == ECONNRESET)) {
            return std::nullopt;
        }
        if (got > 0) {
            received_ += static_cast<std::size_t>(got);
            observe();
        } else if (errno == EAGAIN || errno == EINTR) {
            wait(Direction::Read);
        } else {
            fail("cannot receive from", errno);
        }
    }
}

std::string Connection::ownAddress() const {
    const sockaddr_in own = addressOf(::getsockname, sock_);
    std::array<char, INET_ADDRSTRLEN> name{};
    ::inet_ntop(AF_INET, &own.sin_addr, name.data(), name.size());
    return format("%s:%d", name.data(), ntohs(own.sin_port));
}

bool Connection::staysOnThisMachine() const {
    // No address at all stands for this machine, too.
    return peer_.s_addr == htonl(INADDR_ANY) ||
           addressOf(::getsockname, sock_).sin_addr.s_addr == peer_.s_addr;
}

void Connection::restartTime() { deadline_ = deadlineAfter(timeout_); }

void Connection::connectTo(const Endpoint& endpoint) {
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const std::string port = std::to_string(endpoint.port);
    if (::getaddrinfo(endpoint.host.c_str(), port.c_str(), &wanted, &found) != 0) {
        throw Exception(format("unknown host '%s'", endpoint.host.c_str()));
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
    // Kept: the system forgets it when the server closes at once.
    peer_ = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    if (::connect(sock_, found->ai_addr, found->ai_addrlen) == 0) {
        return;
    }
    if (errno != EINPROGRESS && errno != EINTR) {
        fail("cannot connect to", errno);
    }
    wait(Direction::Write);
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(sock_, SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) {
        fail("cannot connect to", error);
    }
}

void Connection::observe() const {
    if (observer_) {
        observer_(sent_, received_);
    }
}

void Connection::wait(Direction direction) const {
    if (!waitForSocket(sock_, direction, deadline_)) {
        throw Exception(format("no answer from %s within %d s", where_.c_str(), timeout_));
    }
}

void Connection::fail(const char* what, int error) const {
    throw Exception(format("%s %s: %s", what, where_.c_str(), std::strerror(error)));
}

std::optional<std::string> exchange(const Endpoint& endpoint, std::string_view request,
                                    Observer observer) {
    Connection connection(endpoint, std::move(observer));
    connection.send(request);
    return connection.receive();
}

}  // namespace corvane::ctl
