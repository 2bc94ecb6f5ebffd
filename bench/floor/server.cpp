#include "bench/floor/server.h"

#include <sys/select.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <new>
#include <vector>

#include "bench/common/net.h"

namespace corvane::bench {

namespace {

class FloorServer {
  public:
    FloorServer(const Handler& handler, FloorOptions options)
        : handler_(handler), options_(options), listener_(listenOnLoopback(port_)) {}

    [[noreturn]] void run() {
        std::cout << "Listening on 127.0.0.1:" << port_ << std::endl;
        for (;;) {
            serveOne();
        }
    }

  private:
    void serveOne() {
        fd_set ready;
        FD_ZERO(&ready);
        FD_SET(listener_.get(), &ready);
        int highest = listener_.get();
        for (const Descriptor& client : clients_) {
            FD_SET(client.get(), &ready);
            highest = std::max(highest, client.get());
        }
        if (::select(highest + 1, &ready, nullptr, nullptr, nullptr) == -1) {
            return;
        }
        for (auto client = clients_.begin(); client != clients_.end(); ++client) {
            if (FD_ISSET(client->get(), &ready)) {
                if (!answer(client->get())) {
                    clients_.erase(client);
                }
                return;
            }
        }
        accept();
    }

    void accept() {
        Descriptor client(::accept(listener_.get(), nullptr, nullptr));
        if (client.get() == -1) {
            return;
        }
        if (options_.noDelay) {
            setNoDelay(client.get());
        }
        clients_.push_back(std::move(client));
    }

    /// Reads one request to its end and has it answered; false when the client has gone.
    bool answer(int socket) {
        std::size_t size = 0;
        do {
            const ssize_t received = ::recv(socket, request_.room(size, BLOCK), BLOCK, 0);
            if (received <= 0) {
                return false;
            }
            size += static_cast<std::size_t>(received);
        } while (request_.data()[size - 1] != '\0');
        handler_(socket, {request_.data(), size - 1});
        return true;
    }

    const Handler& handler_;
    FloorOptions options_;
    int port_ = 0;
    Descriptor listener_;
    std::vector<Descriptor> clients_;
    Buffer request_;
};

}  // namespace

Buffer::~Buffer() { std::free(data_); }

char* Buffer::room(std::size_t used, std::size_t wanted) {
    if (capacity_ < used + wanted) {
        const std::size_t capacity = std::max(used + wanted, 2 * capacity_);
        void* grown = std::realloc(data_, capacity);
        if (grown == nullptr) {
            throw std::bad_alloc();
        }
        data_ = static_cast<char*>(grown);
        capacity_ = capacity;
    }
    return data_ + used;
}

void serve(const Handler& handler, FloorOptions options) { FloorServer(handler, options).run(); }

}  // namespace corvane::bench
