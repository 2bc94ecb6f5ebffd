// A WebSocket of the page, connected with a TCP server: each direction is one block that is read,
// then written, so that a side that does not read holds the other one up instead of filling memory.
#pragma once

#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <vector>

#include "corvane-play/net.h"
#include "corvane-play/page_stream.h"
#include "corvane-play/service.h"

namespace corvane::play {

class Bridge : public std::enable_shared_from_this<Bridge> {
  public:
    Bridge(Service& service, beast::tcp_stream stream, Target target);

    /// Connects with the target, and only then accepts the WebSocket: a page learns in its own way
    /// that nobody listens.
    void start(Request request);

  private:
    void onResolved(error_code error, const Tcp::resolver::results_type& found);
    void onConnected(error_code error);
    void refuse();
    void readPage();
    void onPage(error_code error, std::size_t count);
    void readTarget();
    void onTarget(error_code error, std::size_t count);
    void pageEnded(error_code error);
    void targetEnded(error_code error);

    Service& service_;
    Place connection_;
    Place bridge_;
    PageSocket page_;
    beast::tcp_stream target_;
    Tcp::resolver resolver_;
    asio::steady_timer linger_;
    Target wanted_;
    Request request_;
    std::vector<char> fromPage_;
    std::vector<char> fromTarget_;
    bool isPageGone_ = false;
    bool isTargetGone_ = false;
};

}  // namespace corvane::play
