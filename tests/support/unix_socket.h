// A socket that lies in a directory like a file.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "platform/file_desc.h"

namespace corvane::test {

/// Creates the socket `name`, best relative to the working directory: the path of a socket is at
/// most about 100 characters long. The entry stays when the descriptor is closed.
inline FileDesc unixSocketAt(const std::string& name) {
    FileDesc sock(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= sizeof address.sun_path) {
        throw std::runtime_error("the name of a socket is too long: " + name);
    }
    std::memcpy(address.sun_path, name.c_str(), name.size());
    if (::bind(sock, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("cannot create a socket at " + name);
    }
    return sock;
}

}  // namespace corvane::test
