// The socket that the page is served on: a free port of the loopback address, for programs of this
// program's user and of root. The page's address is no secret to other users: it stands in the
// browser's command line.
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <cstdint>

#include "corvane-play/net.h"
#include "corvane-play/service.h"
#include "platform/file_desc.h"
#include "platform/peer_user.h"

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
    bool mayConnect(int socket);

    Tcp::acceptor acceptor_;
    asio::steady_timer rest_;
    FileDesc peerUsers_ = platform::openPeerUsers();
    bool hasWarned_ = false;
    Service* service_ = nullptr;
};

}  // namespace corvane::play
