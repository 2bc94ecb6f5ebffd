// The connection beneath a WebSocket of the page.
#pragma once

#include <boost/asio/post.hpp>
#include <boost/beast/core/bind_handler.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <utility>

#include "corvane-play/limits.h"
#include "corvane-play/net.h"

namespace corvane::play {

class PageStream : public beast::tcp_stream {
  public:
    explicit PageStream(beast::tcp_stream stream) : beast::tcp_stream(std::move(stream)) {}
};

/// What the WebSocket does at its end: the library's own way would wait for the page to close the
/// connection, for as long as it likes, before it tells anybody that the WebSocket has ended.
template <typename Handler>
void async_teardown(beast::role_type, PageStream& stream, Handler&& handler) {
    error_code ignored;
    stream.socket().shutdown(Tcp::socket::shutdown_send, ignored);
    asio::post(stream.get_executor(),
               beast::bind_front_handler(std::forward<Handler>(handler), error_code()));
}

using PageSocket = beast::websocket::stream<PageStream>;

/// Sets what every WebSocket here has: pings, time-outs, no compression.
void configure(PageSocket& page, const Limits& limits);

}  // namespace corvane::play
