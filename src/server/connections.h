// The server's connections: found by their descriptor, in the order in which they were accepted,
// and those among them that have something to be read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "server/connection.h"

namespace corvane {

/// No cost depends on the number of connections that are silent, but that of first() and
/// descriptors().
class Connections {
  public:
    Connections();

    /// Makes a connection of a descriptor that fits into an fd_set.
    Connection& add(FileDesc sock, const sockaddr_in& peer);
    /// The connection with this descriptor, or null.
    Connection* find(int sock) const;
    /// Takes a connection out; null when there is none with this descriptor.
    std::unique_ptr<Connection> remove(int sock);

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    /// The one that was accepted before all others, or null.
    Connection* first() const;
    /// All descriptors in the order of acceptance; the program itself does not call it.
    std::vector<int> descriptors() const;

    /// Readable is a connection with unread bytes, or whose socket has been listed by a wait and
    /// not been drained since.
    void markReadable(Connection& connection);
    void markDrained(const Connection& connection);
    bool anyReadable() const { return !readable_.empty(); }
    /// Of the readable ones the one that was accepted first, or null.
    Connection* firstReadable() const { return readable_.empty() ? nullptr : readable_.front(); }

  private:
    std::vector<std::unique_ptr<Connection>> bySock_;
    /// In the order of acceptance.
    std::vector<Connection*> readable_;
    std::size_t size_ = 0;
    std::uint64_t nextNumber_ = 0;
};

}  // namespace corvane
