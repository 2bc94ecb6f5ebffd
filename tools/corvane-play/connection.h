// One connection of a browser: its requests, one after the other, until it asks for a WebSocket or
// ends.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <memory>
#include <optional>
#include <string_view>

#include "corvane-play/net.h"
#include "corvane-play/service.h"

namespace corvane::play {

class Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(Service& service, Tcp::socket socket);

    /// Serves it; it lives as long as it has something to wait for.
    void start() { readRequest(); }

  private:
    void readRequest();
    void onRequest(error_code error);
    void answer();
    void answerWithFile(Found found);
    void answerWithText(const Found& found);
    void answerSocket();
    void refuse(http::status status, std::string_view why);
    template <typename Response>
    void send(Response response);
    void close();

    Service& service_;
    Place place_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
    std::optional<http::request_parser<http::empty_body>> parser_;
};

}  // namespace corvane::play
