#include "server/socket_exception.h"

#include <cerrno>

#include "server/address.h"
#include "server/connection.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr int resetCode = 54;

}  // namespace

SocketClosedException::SocketClosedException(int sock, bool gracefulEnd)
    : SocketClosedException(sock, formatAddress(sock), gracefulEnd) {}

SocketClosedException::SocketClosedException(const Connection& connection, bool gracefulEnd)
    : SocketClosedException(connection.sock(), connection.address(), gracefulEnd) {}

SocketClosedException::SocketClosedException(int sock, const std::string& address, bool gracefulEnd)
    : SocketException(format("Socket %s was closed %s", address.c_str(),
                             gracefulEnd ? "gracefully" : "by reset"),
                      gracefulEnd ? 0 : resetCode),
      socket(sock),
      graceful(gracefulEnd) {}

BindException::BindException(const in_addr& address, int portNumber, int errnum)
    : SocketException(format("Bind error to %s", formatAddress(address, portNumber).c_str()),
                      errnum),
      ip(address),
      port(portNumber) {}

void checkRecvStatus(int sock, long result) {
    if (result > 0) {
        return;
    }
    if (result == 0) {
        throw SocketClosedException(sock, true);
    }
    if (errno == ECONNRESET) {
        throw SocketClosedException(sock, false);
    }
    throw SocketException("recv() error", errno);
}

void checkSendError(int sock, long sendResult) {
    if (sendResult != -1) {
        return;
    }
    if (errno == ECONNRESET) {
        throw SocketClosedException(sock, false);
    }
    throw SocketException("send() error", errno);
}

}  // namespace corvane
