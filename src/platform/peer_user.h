// Which user of this machine holds the other end of a TCP connection over IPv4. TCP itself does not
// tell; the system's table of sockets does. One file per system implements it: peer_user_linux.cpp
// and peer_user_macos.cpp.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "platform/file_desc.h"

namespace corvane::platform {

/// What the look-ups go through, to be opened once; -1 with errno where that fails. A system that
/// needs nothing for them returns -1 as well.
FileDesc openPeerUsers();

/// The effective user of the program that made the other end, when it did. `connection` must be one
/// that was accepted and not half-closed here. It neither waits nor reads from the connection.
/// Nothing with errno when that user cannot be told, so that nobody is ever taken for another:
/// ENOENT for a client that is not on this machine (or container), or that is gone and whose user
/// the system has forgotten; ENOTCONN for one that has reset the connection; EOVERFLOW for a user
/// without a number here; or what a system call fails with.
std::optional<uid_t> peerUser(int channel, int connection);

/// Whether it is the user of this program or root, who may do all that this program may.
inline bool isOwnUserOrRoot(uid_t user) { return user == 0 || user == ::geteuid(); }

/// The user's name, empty for none. Linux only looks into the machine's own list, since the service
/// of a network might let the caller wait.
std::string userName(uid_t user);

}  // namespace corvane::platform
