#include "server/address.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <cstddef>

namespace corvane {
namespace {

char* writeNumber(char* at, int number) {
    constexpr std::ptrdiff_t mostDigits = 11;
    return std::to_chars(at, at + mostDigits, number).ptr;
}

}  // namespace

std::string formatAddress(const in_addr& a, int port) {
    std::array<char, sizeof "255.255.255.255:-2147483648"> text;  // NOLINT: filled below
    const auto* octets = reinterpret_cast<const unsigned char*>(&a.s_addr);
    char* end = text.data();
    for (std::size_t i = 0; i < sizeof a.s_addr; ++i) {
        end = writeNumber(end, octets[i]);
        *end++ = i + 1 < sizeof a.s_addr ? '.' : ':';
    }
    return {text.data(), writeNumber(end, port)};
}

std::string formatAddress(const sockaddr_in& sa) {
    return formatAddress(sa.sin_addr, ntohs(sa.sin_port));
}

std::string formatAddress(int sock) {
    int listening = 1;
    socklen_t length = sizeof listening;
    ::getsockopt(sock, SOL_SOCKET, SO_ACCEPTCONN, &listening, &length);
    sockaddr_in address{};
    length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const int result = listening == 1 ? ::getsockname(sock, generic, &length)
                                      : ::getpeername(sock, generic, &length);
    return result == 0 && address.sin_family == AF_INET ? formatAddress(address) : unknownAddress;
}

}  // namespace corvane
