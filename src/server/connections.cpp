#include "server/connections.h"

#include <sys/select.h>

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

bool isEarlier(const Connection* a, const Connection* b) { return a->number() < b->number(); }

}  // namespace

// Neither list needs memory later, which may be short then.
Connections::Connections() : bySock_(FD_SETSIZE) { readable_.reserve(FD_SETSIZE); }

Connection& Connections::add(FileDesc sock, const sockaddr_in& peer) {
    const auto place = static_cast<std::size_t>(static_cast<int>(sock));
    bySock_.at(place) = std::make_unique<Connection>(std::move(sock), peer, nextNumber_++);
    ++size_;
    return *bySock_[place];
}

Connection* Connections::find(int sock) const {
    return sock >= 0 && sock < FD_SETSIZE ? bySock_[static_cast<std::size_t>(sock)].get() : nullptr;
}

std::unique_ptr<Connection> Connections::remove(int sock) {
    Connection* const connection = find(sock);
    if (connection == nullptr) {
        return nullptr;
    }
    markDrained(*connection);
    --size_;
    return std::exchange(bySock_[static_cast<std::size_t>(sock)], nullptr);
}

Connection* Connections::first() const {
    Connection* earliest = nullptr;
    for (const std::unique_ptr<Connection>& connection : bySock_) {
        if (connection && (earliest == nullptr || isEarlier(connection.get(), earliest))) {
            earliest = connection.get();
        }
    }
    return earliest;
}

std::vector<int> Connections::descriptors() const {
    std::vector<const Connection*> inOrder;
    for (const std::unique_ptr<Connection>& connection : bySock_) {
        if (connection) {
            inOrder.push_back(connection.get());
        }
    }
    std::sort(inOrder.begin(), inOrder.end(), isEarlier);
    std::vector<int> socks;
    socks.reserve(inOrder.size());
    for (const Connection* connection : inOrder) {
        socks.push_back(connection->sock());
    }
    return socks;
}

void Connections::markReadable(Connection& connection) {
    const auto place = std::lower_bound(readable_.begin(), readable_.end(), &connection, isEarlier);
    if (place == readable_.end() || *place != &connection) {
        readable_.insert(place, &connection);
    }
}

void Connections::markDrained(const Connection& connection) {
    const auto place = std::lower_bound(readable_.begin(), readable_.end(), &connection, isEarlier);
    if (place != readable_.end() && *place == &connection) {
        readable_.erase(place);
    }
}

}  // namespace corvane
