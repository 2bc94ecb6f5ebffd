#include "corvane-play/listener.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "corvane-play/connection.h"
#include "text/strings.h"

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
    if (service_->connections < service_->site.limits.connections &&
        mayConnect(socket.native_handle())) {
        std::make_shared<Connection>(*service_, std::move(socket))->start();
    }
    accept();
}

bool Listener::mayConnect(int socket) {
    const std::optional<uid_t> user = platform::peerUser(peerUsers_, socket);
    const int error = errno;
    if (user && platform::isOwnUserOrRoot(*user)) {
        return true;
    }
    const bool isGoneAlready = !user && (error == ENOENT || error == ENOTCONN);
    if (!isGoneAlready && !std::exchange(hasWarned_, true)) {
        std::cerr << "corvane-play: refused a connection "
                  << (user ? format("of user %u", *user)
                           : format("whose user cannot be told (%s)", std::strerror(error)))
                  << std::endl;
    }
    return false;
}

}  // namespace corvane::play
