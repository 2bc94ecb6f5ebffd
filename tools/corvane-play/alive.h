// The WebSocket by which a page tells that it is there. Nothing is said on it: it lasts as long as
// the page does, also one in a background tab, whose timers the browser slows down.
#pragma once

#include <array>
#include <memory>

#include "corvane-play/net.h"
#include "corvane-play/page_stream.h"
#include "corvane-play/service.h"

namespace corvane::play {

class Alive : public std::enable_shared_from_this<Alive> {
  public:
    Alive(Service& service, beast::tcp_stream stream);

    void start(Request request);

  private:
    void read();

    Service& service_;
    Place place_;
    PageSocket page_;
    std::array<char, 128> room_{};
};

}  // namespace corvane::play
