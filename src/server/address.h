// The text form of socket addresses, with which nearly every log line about a client begins.
#pragma once

#include <netinet/in.h>

#include <string>

namespace corvane {

/// "%d.%d.%d.%d:%d", the octets in network order, `port` as a plain number.
std::string formatAddress(const in_addr& a, int port);
/// The same, with the port taken from network order.
std::string formatAddress(const sockaddr_in& sa);
/// The local address of a listening socket, the peer of a connected one, and "?.?.?.?:?" when there
/// is none, as for a closed socket. The peer of a remembered socket costs no system call.
std::string formatAddress(int sock);

/// Keeps the peer of a connection for as long as its descriptor is open: the system forgets it when
/// the peer resets the connection, the log must not.
void rememberPeer(int sock, const sockaddr_in& peer);
/// To be called when `sock` is closed.
void forgetPeer(int sock);

}  // namespace corvane
