#include "corvanectl/exchange.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>

#include "platform/file_desc.h"
#include "platform/system.h"
#include "platform/waiting.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::size_t receiveChunk = std::size_t{64} * 1024;

class Connection {
  public:
    explicit Connection(const Endpoint& endpoint)
        : where_(format("%s:%d", endpoint.host.c_str(), endpoint.port)),
          timeout_(endpoint.timeout),
          deadline_(deadlineAfter(endpoint.timeout)),
          sock_(::socket(AF_INET, SOCK_STREAM, 0)) {
        if (sock_ == -1) {
            fail("cannot connect to", errno);
        }
        ::fcntl(sock_, F_SETFL, O_NONBLOCK);
        connectTo(endpoint);
    }

    // A server that has closed its side already is no failure: it may have answered before.
    void send(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t sent = ::send(sock_, bytes.data(), bytes.size(), platform::sendFlags());
            if (sent >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(sent));
            } else if (errno == EAGAIN || errno == EINTR) {
                wait(Direction::Write);
            } else if (errno == EPIPE || errno == ECONNRESET) {
                return;
            } else {
                fail("cannot send to", errno);
            }
        }
    }

    std::optional<std::string> receive() {
        std::string reply;
        while (true) {
            const std::size_t before = reply.size();
            reply.resize(before + receiveChunk);
            const ssize_t got = ::recv(sock_, reply.data() + before, receiveChunk, 0);
            reply.resize(before + static_cast<std::size_t>(got > 0 ? got : 0));
            if (const std::size_t end = reply.find('\0', before); end != std::string::npos) {
                reply.resize(end);
                return reply;
            }
            if (got == 0 || (got == -1 && errno == ECONNRESET)) {
                return std::nullopt;
            }
            if (got == -1 && (errno == EAGAIN || errno == EINTR)) {
                wait(Direction::Read);
            } else if (got == -1) {
                fail("cannot receive from", errno);
            }
        }
    }

  private:
    void connectTo(const Endpoint& endpoint) {
        addrinfo wanted{};
        wanted.ai_family = AF_INET;
        wanted.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        const std::string port = std::to_string(endpoint.port);
        if (::getaddrinfo(endpoint.host.c_str(), port.c_str(), &wanted, &found) != 0) {
            throw Exception(format("unknown host '%s'", endpoint.host.c_str()));
        }
        const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, ::freeaddrinfo);
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

    void wait(Direction direction) const {
        if (!waitForSocket(sock_, direction, deadline_)) {
            throw Exception(format("no answer from %s within %d s", where_.c_str(), timeout_));
        }
    }

    [[noreturn]] void fail(const char* what, int error) const {
        throw Exception(format("%s %s: %s", what, where_.c_str(), std::strerror(error)));
    }

    std::string where_;
    int timeout_;
    Deadline deadline_;
    FileDesc sock_;
};

}  // namespace

std::optional<std::string> exchange(const Endpoint& endpoint, std::string_view request) {
    Connection connection(endpoint);
    connection.send(request);
    return connection.receive();
}

}  // namespace corvane::ctl
