// Names of the networking library, as the files here use them.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/error.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

namespace corvane::play {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using Tcp = asio::ip::tcp;
using beast::error_code;

using Request = http::request<http::empty_body>;
using TextResponse = http::response<http::string_body>;

/// Closes so that the peer sees a reset instead of an end.
inline void reset(Tcp::socket& socket) {
    error_code ignored;
    socket.set_option(asio::socket_base::linger(true, 0), ignored);
    socket.close(ignored);
}

inline std::string_view viewOf(beast::string_view text) { return {text.data(), text.size()}; }

}  // namespace corvane::play
