#include "corvane-play/listener.h"

#include <chrono>
#include <memory>
#include <utility>

#include "corvane-play/connection.h"

namespace corvane::play {

Listener::Listener(asio::io_context& context)
    : acceptor_(context, Tcp::endpoint(asio::ip::address_v4::loopback(), 0)), rest_(context) {}

void Listener::start(Service& service) {
    service_ = &service;
    accept();
}

void Listener::accept() {
    acceptor_.async_accept(
        [this](error_code error, Tcp::socket socket) { onAccept(error, std::move(socket)); });
}

void Listener::onAccept(error_code error, Tcp::socket socket) {
    if (error) {
        // Out of descriptors, for example: others have to end first.
        rest_.expires_after(std::chrono::milliseconds(100));
        rest_.async_wait([this](error_code) { accept(); });
        return;
    }
    if (service_->connections < service_->site.limits.connections) {
        std::make_shared<Connection>(*service_, std::move(socket))->start();
    }
    accept();
}

}  // namespace corvane::play
