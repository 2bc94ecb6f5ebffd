#include <gtest/gtest.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "corvane-play/listener.h"
#include "corvane-play/service.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

using std::chrono::seconds;

constexpr seconds brief(1);
const Tcp::endpoint anyPort(asio::ip::address_v4::loopback(), 0);

// Serves the bridge alone, in a thread of its own, with the limits that a test sets.
class TimeLimits : public testing::Test {
  protected:
    ~TimeLimits() override {
        context_.stop();
        if (server_.joinable()) {
            server_.join();
        }
    }

    void serve(const Limits& limits) {
        Site site;
        site.port = listener_.port();
        site.token = "token";
        site.targets = {{"127.0.0.1", target.local_endpoint().port()}};
        site.allowedOrigins = {"https://page"};
        site.limits = limits;
        service_.emplace(context_, std::move(site));
        listener_.start(*service_);
        server_ = std::thread([this] { context_.run(); });
    }

    Tcp::socket connect(std::string_view sent) {
        Tcp::socket page(own);
        page.connect({asio::ip::address_v4::loopback(), listener_.port()});
        asio::write(page, asio::buffer(sent.data(), sent.size()));
        return page;
    }

    std::string bridgeRequest() {
        return concatenate("GET ", bridgePath(service_->site, service_->site.targets.front()),
                           " HTTP/1.1\r\nHost: 127.0.0.1:", std::to_string(listener_.port()),
                           "\r\nOrigin: https://page\r\nUpgrade: websocket\r\n"
                           "Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    }

    // The first line of an answer.
    static std::string statusOf(Tcp::socket& page) {
        std::string head;
        asio::read_until(page, asio::dynamic_buffer(head), "\r\n\r\n");
        return head.substr(0, head.find('\r'));
    }

    // All that comes until the other side closes its connection.
    static std::string readToEnd(Tcp::socket& socket) {
        std::string got;
        error_code ended;
        asio::read(socket, asio::dynamic_buffer(got), ended);
        return got;
    }

    asio::io_context own;
    Tcp::acceptor target{own, anyPort};

  private:
    asio::io_context context_;
    Listener listener_{context_};
    std::optional<Service> service_;
    std::thread server_;
};

TEST_F(TimeLimits, EndAConnectionWithoutAWholeRequest) {
    serve({.request = brief});
    for (const std::string_view begun : {"", "GET / HTTP/1.1\r\nHost: "}) {
        Tcp::socket page = connect(begun);
        EXPECT_EQ(readToEnd(page), "");
    }
}

TEST_F(TimeLimits, RefuseABridgeWhoseTargetDoesNotAnswer) {
    serve({.connect = brief});
    target.listen(0);  // one connection may wait, and a further one is not answered
    Tcp::socket waiting(own);
    waiting.connect(target.local_endpoint());
    Tcp::socket page = connect(bridgeRequest());
    EXPECT_EQ(statusOf(page), "HTTP/1.1 502 Bad Gateway");
}

TEST_F(TimeLimits, EndABridgeWhosePageAnswersNoPing) {
    serve({.silence = brief});
    Tcp::socket page = connect(bridgeRequest());
    Tcp::socket reached = target.accept();
    EXPECT_EQ(statusOf(page), "HTTP/1.1 101 Switching Protocols");
    const std::string got = readToEnd(page);
    EXPECT_NE(got.find("\x89"), std::string::npos);  // a ping
    EXPECT_EQ(readToEnd(reached), "");
}

TEST_F(TimeLimits, EndTheTargetsConnectionSomeTimeAfterThePageHasGone) {
    serve({.linger = brief});
    Tcp::socket page = connect(bridgeRequest());
    Tcp::socket reached = target.accept();
    EXPECT_EQ(statusOf(page), "HTTP/1.1 101 Switching Protocols");
    page.close();
    EXPECT_EQ(readToEnd(reached), "");
    // Half-closed until then, so that the target can still send; afterwards it gets a reset.
    error_code gone;
    while (!gone) {
        asio::write(reached, asio::buffer("x", 1), gone);
    }
    EXPECT_TRUE(gone);
}

}  // namespace
}  // namespace corvane::play
