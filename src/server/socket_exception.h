// Failures of sockets.
#pragma once

#include <netinet/in.h>

#include <string>

#include "text/exception.h"

namespace corvane {

class Connection;

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
    /// With the address that the connection keeps, which the system may have forgotten.
    SocketClosedException(const Connection& connection, bool gracefulEnd);

    int socket;
    bool graceful;

  private:
    SocketClosedException(int sock, const std::string& address, bool gracefulEnd);
};

/// "Bind error to %s" with the address.
class BindException : public SocketException {
  public:
    BindException(const in_addr& address, int portNumber, int errnum);

    /// In network order.
    in_addr ip;
    int port;
};

/// Turns a result of recv(2) into an exception, or nothing when bytes came.
void checkRecvStatus(int sock, long result);
/// Turns a result of send(2) into an exception, or nothing when it is not -1.
void checkSendError(int sock, long sendResult);

}  // namespace corvane
