#include "server/socket_exception.h"

#include "server/address.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr int resetCode = 54;

}  // namespace

SocketClosedException::SocketClosedException(int sock, bool gracefulEnd)
    : SocketException(format("Socket %s was closed %s", formatAddress(sock).c_str(),
                             gracefulEnd ? "gracefully" : "by reset"),
                      gracefulEnd ? 0 : resetCode),
      socket(sock),
      graceful(gracefulEnd) {}

BindException::BindException(const in_addr& address, int portNumber, int errnum)
    : SocketException(format("Bind error to %s", formatAddress(address, portNumber).c_str()),
                      errnum),
      ip(address),
      port(portNumber) {}

}  // namespace corvane
