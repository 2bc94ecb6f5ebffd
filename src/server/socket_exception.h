// Failures of sockets.
#pragma once

#include <netinet/in.h>

#include "text/exception.h"

namespace corvane {

class SocketException : public IOException {
  public:
    using IOException::IOException;
};

/// The peer ended the connection: "Socket %s was closed gracefully (0)" or "... by reset (54)". 54
/// is the number of ECONNRESET on macOS; it stands in the message on every system.
class SocketClosedException : public SocketException {
  public:
    /// The address in the message is computed now, so `sock` must still be open.
    SocketClosedException(int sock, bool gracefulEnd);

    int socket;
    bool graceful;
};

/// "Bind error to %s" with the address.
class BindException : public SocketException {
  public:
    BindException(const in_addr& address, int portNumber, int errnum);

    /// In network order.
    in_addr ip;
    int port;
};

}  // namespace corvane
