#include "corvane-play/bridge.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/write.hpp>
#include <string>
#include <utility>

#include "corvane-play/responses.h"

namespace corvane::play {

Bridge::Bridge(Service& service, beast::tcp_stream stream, Target target)
    : service_(service),
      connection_(service.connections),
      bridge_(service.bridges),
      page_(PageStream(std::move(stream))),
      target_(service.context),
      resolver_(service.context),
      linger_(service.context),
      wanted_(std::move(target)),
      fromPage_(service.site.limits.block),
      fromTarget_(service.site.limits.block) {}

void Bridge::start(Request request) {
    request_ = std::move(request);
    page_.next_layer().expires_never();
    target_.expires_after(service_.site.limits.connect);
    error_code notAnAddress;
    const auto address = asio::ip::make_address(wanted_.host, notAnAddress);
    const auto connected = [self = shared_from_this()](error_code error) {
        self->onConnected(error);
    };
    if (!notAnAddress) {
        target_.async_connect(Tcp::endpoint(address, wanted_.port), connected);
        return;
    }
    resolver_.async_resolve(
        wanted_.host, std::to_string(wanted_.port), Tcp::resolver::numeric_service,
        [self = shared_from_this()](error_code error, const Tcp::resolver::results_type& found) {
            self->onResolved(error, found);
        });
}

void Bridge::onResolved(error_code error, const Tcp::resolver::results_type& found) {
    if (error) {
        return onConnected(error);
    }
    target_.expires_after(service_.site.limits.connect);
    target_.async_connect(found,
                          [self = shared_from_this()](error_code failure, const Tcp::endpoint&) {
                              self->onConnected(failure);
                          });
}

void Bridge::onConnected(error_code error) {
    if (error) {
        return refuse();
    }
    target_.expires_never();
    error_code ignored;
    target_.socket().set_option(Tcp::no_delay(true), ignored);
    page_.next_layer().socket().set_option(Tcp::no_delay(true), ignored);
    configure(page_, service_.site.limits);
    page_.async_accept(request_, [self = shared_from_this()](error_code failure) {
        if (failure) {
            reset(self->target_.socket());
            return;
        }
        self->readPage();
        self->readTarget();
    });
}

void Bridge::refuse() {
    auto response = std::make_shared<TextResponse>(messagePage(
        request_, http::status::bad_gateway, "The server does not accept connections."));
    response->keep_alive(false);
    page_.next_layer().expires_after(service_.site.limits.request);
    http::async_write(page_.next_layer(), *response,
                      [self = shared_from_this(), response](error_code, std::size_t) {});
}

void Bridge::readPage() {
    page_.async_read_some(asio::buffer(fromPage_),
                          [self = shared_from_this()](error_code error, std::size_t count) {
                              self->onPage(error, count);
                          });
}

void Bridge::onPage(error_code error, std::size_t count) {
    if (error) {
        return pageEnded(error);
    }
    asio::async_write(target_, asio::buffer(fromPage_.data(), count),
                      [self = shared_from_this()](error_code failure, std::size_t) {
                          // A failed write shows in readTarget() as well, which tells the page.
                          if (!failure) {
                              self->readPage();
                          }
                      });
}

void Bridge::readTarget() {
    target_.async_read_some(asio::buffer(fromTarget_),
                            [self = shared_from_this()](error_code error, std::size_t count) {
                                self->onTarget(error, count);
                            });
}

void Bridge::onTarget(error_code error, std::size_t count) {
    if (error) {
        return targetEnded(error);
    }
    if (isPageGone_) {
        return readTarget();
    }
    page_.async_write(asio::buffer(fromTarget_.data(), count),
                      [self = shared_from_this()](error_code failure, std::size_t) {
                          // The rest of what the target sends is for nobody; readPage() ends too.
                          self->isPageGone_ = self->isPageGone_ || failure;
                          self->readTarget();
                      });
}

void Bridge::pageEnded(error_code error) {
    isPageGone_ = true;
    Tcp::socket& socket = target_.socket();
    error_code ignored;
    if (isTargetGone_) {
        socket.close(ignored);
        return;
    }
    if (error != beast::websocket::error::closed && error != asio::error::eof) {
        return reset(socket);
    }
    socket.shutdown(Tcp::socket::shutdown_send, ignored);
    linger_.expires_after(service_.site.limits.linger);
    linger_.async_wait([self = shared_from_this()](error_code cancelled) {
        if (!cancelled) {
            self->target_.close();
        }
    });
}

void Bridge::targetEnded(error_code error) {
    isTargetGone_ = true;
    linger_.cancel();
    if (isPageGone_) {
        return;
    }
    if (error != asio::error::eof) {
        return reset(page_.next_layer().socket());
    }
    page_.async_close(beast::websocket::close_code::normal,
                      [self = shared_from_this()](error_code) {});
}

}  // namespace corvane::play
