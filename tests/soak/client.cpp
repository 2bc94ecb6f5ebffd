#include "soak/client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

#include "soak/server_process.h"

namespace soak {
namespace {

sockaddr_in loopback(int address, int port) {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK + static_cast<std::uint32_t>(address) - 1);
    place.sin_port = htons(static_cast<in_port_t>(port));
    return place;
}

}  // namespace

Client::Client(int port, int address) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    const timeval patience{10, 0};
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    ::setsockopt(socket_, IPPROTO_IP, IP_BIND_ADDRESS_NO_PORT, &on, sizeof on);
    const sockaddr_in from = loopback(address, 0);
    const sockaddr_in to = loopback(1, port);
    const bool connected =
        ::bind(socket_, reinterpret_cast<const sockaddr*>(&from), sizeof from) == 0 &&
        ::connect(socket_, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
    expect(connected, std::string("a client can connect: ") + std::strerror(errno));
}

Client::~Client() {
    if (socket_ != -1) {
        ::close(socket_);
    }
}

Client::Client(Client&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)), received_(std::move(other.received_)) {}

void Client::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && (errno == EPIPE || errno == ECONNRESET)) {
            return;  // the missing reply will tell
        }
        expect(sent > 0, std::string("a request can be sent: ") + std::strerror(errno));
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

bool Client::tryReply(std::string& reply) {
    std::size_t end = 0;
    std::size_t searched = 0;
    while ((end = received_.find('\0', searched)) == std::string::npos) {
        searched = received_.size();
        std::array<char, 65536> chunk;
        const ssize_t count = ::recv(socket_, chunk.data(), chunk.size(), 0);
        expect(count >= 0 || errno == ECONNRESET, "a reply comes in time");
        if (count <= 0) {
            return false;
        }
        received_.append(chunk.data(), static_cast<std::size_t>(count));
    }
    reply = received_.substr(0, end);
    received_.erase(0, end + 1);
    return true;
}

std::string Client::reply() {
    std::string text;
    expect(tryReply(text), "the connection stays open");
    return text;
}

std::string Client::ask(const std::string& request) {
    send(std::string_view(request.c_str(), request.size() + 1));
    return reply();
}

void Client::awaitReply() const {
    constexpr int patience = 10'000;  // milliseconds
    pollfd arrival{socket_, POLLIN, 0};
    expect(::poll(&arrival, 1, patience) == 1, "a reply begins");
}

void Client::awaitReceived() const {
    sockaddr_in own{};
    sockaddr_in server{};
    socklen_t size = sizeof own;
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&own), &size);
    ::getpeername(socket_, reinterpret_cast<sockaddr*>(&server), &size);
    // The server's line: its end, ours, established, nothing to send, nothing to receive (proc(5)).
    std::array<char, 64> emptied;
    static_cast<void>(std::snprintf(
        emptied.data(), emptied.size(), "%08X:%04X %08X:%04X 01 00000000:00000000",
        server.sin_addr.s_addr, ntohs(server.sin_port), own.sin_addr.s_addr, ntohs(own.sin_port)));
    waitUntil(
        [&] {
            std::ifstream sockets("/proc/net/tcp");
            const std::string lines{std::istreambuf_iterator<char>(sockets), {}};
            return lines.find(emptied.data()) != std::string::npos;
        },
        "the server receives what was sent");
}

void Client::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    ::close(std::exchange(socket_, -1));
}

std::string unknownReply(const std::string& command) {
    return "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"" + command +
           "\" Result=\"FAILED\"></Header></CorvaneMsg>";
}

}  // namespace soak
