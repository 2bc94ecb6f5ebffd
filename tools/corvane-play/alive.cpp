#include "corvane-play/alive.h"

#include <boost/asio/buffer.hpp>
#include <utility>

namespace corvane::play {

void configure(PageSocket& page, const Limits& limits) {
    page.next_layer().expires_never();  // the WebSocket has time-outs of its own
    page.set_option(beast::websocket::stream_base::timeout{limits.handshake, limits.silence, true});
    page.read_message_max(0);  // messages are passed on piece by piece
    page.binary(true);
    page.auto_fragment(false);
}

Alive::Alive(Service& service, beast::tcp_stream stream)
    : service_(service), place_(service.connections), page_(PageStream(std::move(stream))) {}

void Alive::start(Request request) {
    configure(page_, service_.site.limits);
    auto kept = std::make_shared<Request>(std::move(request));
    page_.async_accept(*kept, [self = shared_from_this(), kept](error_code error) {
        if (!error) {
            self->service_.presence.enter();
            self->read();
        }
    });
}

void Alive::read() {
    page_.async_read_some(asio::buffer(room_),
                          [self = shared_from_this()](error_code error, std::size_t) {
                              if (error) {
                                  self->service_.presence.leave();
                              } else {
                                  self->read();
                              }
                          });
}

}  // namespace corvane::play
