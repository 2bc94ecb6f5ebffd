// One connection of a client: its descriptor, its peer, what has been received of it and not been
// consumed yet, and what the last wait has told about it.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file_desc.h"
#include "platform/waiting.h"
#include "text/byte_buffer.h"

namespace corvane {

class Connection {
  public:
    /// `peer` is unknown when it is of no IPv4 family. `number` is larger for each connection than
    /// for all that were accepted before.
    Connection(FileDesc sock, const sockaddr_in& peer, std::uint64_t number);

    /// The descriptor that it was accepted with; kept as its name when it is closed.
    int sock() const { return name_; }
    /// The descriptor for system calls; -1 from close() on, so that no other file is ever taken
    /// for it.
    int descriptor() const { return sock_; }
    std::uint64_t number() const { return number_; }

    /// The peer as log lines show it, "127.0.0.1:50000". The system forgets it when the peer resets
    /// the connection, the log must not. "?.?.?.?:?" when it is unknown, and from close() on.
    const std::string& address() const { return address_; }

    /// Sends the end of the stream behind all that was sent.
    void halfClose() const;
    /// Gives up the descriptor and the address; views of the input stay valid. Returns 0 or the
    /// error number of close(2).
    int close();

    /// What has been received and not been consumed. A view of it is valid until the next
    /// receive(), dropInput() or putBack().
    std::string_view unread() const { return input_.view().substr(consumed_); }
    /// Takes the first `count` of these bytes away; views of them stay valid as said above.
    void consume(std::size_t count) { consumed_ += count; }
    /// Forgets the input and frees its memory.
    void dropInput();

    enum class Input {
        Bytes,    ///< there are more unread bytes now
        Nothing,  ///< nothing has arrived
        End,      ///< the client has closed or half-closed the connection
    };
    /// Receives what has arrived behind the unread bytes, without waiting. Throws
    /// SocketClosedException when the client has reset the connection, else SocketException.
    Input receive();
    /// Whether the last receive() took all that was in the socket.
    bool isDrained() const { return isDrained_; }

    /// Receives into `buffer` from now on, unless there are unread bytes. All connections share one
    /// such buffer, so that a silent one holds no memory; it is lent for as long as a request is
    /// read and served.
    void borrow(ByteBuffer& buffer);
    /// Gives the memory back to `buffer`; what is still unread moves to memory of its own size.
    void putBack(ByteBuffer& buffer);

    /// To be called when the last wait has listed the socket.
    void arrived(bool needsRearm) {
        isDrained_ = false;
        needsRearm_ = needsRearm_ || needsRearm;
    }
    /// Whether something, such as a hang-up, may be left behind the bytes that were drained: then
    /// the socket has to be re-armed. Tells it once.
    bool takeNeedsRearm();

    /// When the request that is being read must be complete; none for any time.
    Deadline deadline;
    /// Whether what it sends looks like a browser's: then its end is no application's.
    bool isForeign = false;

  private:
    FileDesc sock_;
    int name_;
    std::uint64_t number_;
    std::string address_;
    ByteBuffer input_;
    std::size_t consumed_ = 0;
    bool isBorrowed_ = false;
    bool isDrained_ = true;
    bool needsRearm_ = false;
};

}  // namespace corvane
