// The text form of socket addresses, with which nearly every log line about a client begins.
#pragma once

#include <netinet/in.h>

#include <string>

namespace corvane {

inline constexpr const char* unknownAddress = "?.?.?.?:?";

/// "%d.%d.%d.%d:%d", the octets in network order, `port` as a plain number.
std::string formatAddress(const in_addr& a, int port);
/// The same, with the port taken from network order.
std::string formatAddress(const sockaddr_in& sa);
/// What the system says of a socket: the local address of a listening one, the peer of a connected
/// one, and unknownAddress when there is none, as for a closed socket. The system forgets the peer
/// of a connection that was reset; Connection::address() does not.
std::string formatAddress(int sock);

}  // namespace corvane
