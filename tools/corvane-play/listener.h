// The socket that the page is served on: a free port of the loopback address.
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <cstdint>

#include "corvane-play/net.h"
#include "corvane-play/service.h"

namespace corvane::play {

class Listener {
  public:
    /// Opens it. Throws boost::system::system_error.
    explicit Listener(asio::io_context& context);

    std::uint16_t port() const { return acceptor_.local_endpoint().port(); }

    /// Serves until the context is stopped.
    void start(Service& service);

  private:
    void accept();
    void onAccept(error_code error, Tcp::socket socket);

    Tcp::acceptor acceptor_;
    asio::steady_timer rest_;
    Service* service_ = nullptr;
};

}  // namespace corvane::play
