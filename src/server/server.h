// A small single-threaded TCP server: it waits for sockets, accepts connections, reads one request
// at a time (text ended by a 0x00 or 0x01 byte) and hands it to processClientCommand(), which a
// derived class overrides. It stops on the request "shutdown", after a time without activity, when
// a client disconnects and the configuration asks for it, or when its listeners are closed by
// deinitServer().
#pragma once

#include <sys/select.h>

#include <chrono>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_desc.h"
#include "platform/freed_memory.h"
#include "platform/socket_watch.h"
#include "platform/waiting.h"
#include "server/connections.h"
#include "server/server_options.h"
#include "text/byte_buffer.h"
#include "text/memory_stream.h"

namespace corvane {

class Server {
  public:
    Server();
    virtual ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    Server(Server&&) = delete;
    Server& operator=(Server&&) = delete;

    /// Opens the listener on the address and port of the options, and what options.sameUser needs.
    virtual void initServer();
    /// Handles one request: its first line and a stream over the other lines. This one only logs.
    virtual void processClientCommand(int sock, const std::string& cmd, std::istream& params);
    /// Tells the client that its request cannot be served at all. `cmd` is not escaped.
    virtual void sendFatalError(int sock, const std::string& cmd);

    /// Opens one more IPv4 listener. An empty address means all interfaces; port 0 lets the system
    /// choose. Throws SocketException or BindException.
    void initListener(const std::string& address, int port);

    /// Serves until it is told to stop; closes the clients then. Throws Exception when there is no
    /// listener (any more) and SocketException when waiting fails, both without closing anything.
    void process();

    /// Accepts one connection.
    void processListener(int listenSock);
    /// Reads and handles one request of a client. Returns false when the server has to stop.
    bool processClient(int sock);
    /// Serves a connection that was accepted elsewhere from now on.
    Connection& addClient(FileDesc sock, const sockaddr_in& peer);

    /// The next parameter line without its CR and LF; empty at the end of the request and from the
    /// first line on that has more than 1023 characters.
    static std::string getline(std::istream& in);
    /// The same for the first line of a text, which it takes off the text. Nothing at the end of
    /// the text and for a line that is too long.
    static std::optional<std::string> takeLine(std::string_view& text);

    /// Sends the reply text and its terminating zero byte in one piece. Waits while the client does
    /// not read. Throws SocketClosedException and SocketException.
    void sendResponse(int sock, const char* data, int length);
    /// The same for a text in several pieces, the last of which ends with the zero byte. What has
    /// been sent is taken off the pieces.
    void sendTerminated(int sock, std::span<std::string_view> pieces);

    /// The address of a client or listener as log lines show it, for as long as it is open;
    /// unknownAddress for any other descriptor.
    const std::string& addressOf(int sock);

    /// Closes a client, after a half-close when `graceful`, or a listener. A descriptor that is
    /// neither, as after a termination signal, only gives log lines that say so.
    void closeSocket(int sock, bool graceful);
    /// Closes a client after an error or its disconnection. Returns false when
    /// options.shutdownOnDisconnect makes the server stop.
    bool errorCloseSocket(int sock, bool graceful);
    void deinitListeners();
    void deinitClients();
    /// Closes everything, so that process() ends. Safe to call again, and from a signal handler
    /// inside a wait.
    void deinitServer();

    // Provided interface, which the program itself does not call.

    /// Reads one request, without its terminator; what follows it is for the next call. Returns
    /// false, with one byte consumed, when the request begins with CR or LF. Throws
    /// SocketClosedException and SocketException; ForeignRequest for what a browser sends;
    /// Exception when the request exceeds its limits.
    bool readRequest(int sock, ByteBuffer& out);
    /// Sets every descriptor of `socks`; returns the largest, 0 for none.
    static int addSocketsToFdSet(fd_set& set, const std::vector<int>& socks);
    /// The first of `socks` that is set, or -1.
    static int isSocketsEvent(const fd_set& set, const std::vector<int>& socks);
    /// Closes a socket, which leaves `socks`; and all of them.
    void closeSocket(std::vector<int>& socks, int sock, bool graceful);
    void deinitSockets(std::vector<int>& socks, bool graceful);
    static void addSocket(std::vector<int>& socks, int sock);
    /// Returns whether the socket was there.
    static bool removeSocket(std::vector<int>& socks, int sock);

    struct Listener {
        FileDesc sock;
        std::string address;
        /// Whether a connection may be waiting.
        bool isReadable = false;
    };

    /// In the order in which they were opened.
    std::vector<Listener> listeners;
    Connections clients;
    ServerOptions options;

  protected:
    bool isAllowed(const std::string& cmd) const;
    /// To be called where work may leave much freed memory behind.
    void expectFreedMemory() { freedMemory_.expect(); }

  private:
    /// What the end of a turn, or of a connection, means for the loop.
    enum class Next {
        Serve,  ///< go on with the next turn
        Stop,   ///< end process()
    };
    /// What a wait has ended with.
    enum class Wait {
        Ready,     ///< a client or a listener is readable
        Inactive,  ///< the inactivity time is over
        Signal,    ///< a signal was handled, which may have closed everything
    };
    /// What reading a request has led to.
    enum class Received {
        Request,  ///< request_ is complete
        LineEnd,  ///< a lone CR or LF, which is consumed and not answered
        Nothing,  ///< nothing has arrived
        End,      ///< the client has ended the connection
    };

    Next serveNext();
    Wait waitForEvent();
    Deadline returnMemory();
    void takeEvents();
    bool anyReadable();
    Listener* readableListener();
    Listener* findListener(int sock);

    void accept(Listener& listener);
    bool mayConnect(int sock, const sockaddr_in& peer);
    void pauseListeners();
    void resumeListeners();

    Next serve(Connection& client);
    Next serveAndRecover(Connection& client);
    Next serveRequest(Connection& client);
    void settle(Connection& client);
    Next closeFinished(Connection& client, bool graceful);
    Next closeAfterError(const Connection& client, bool graceful);
    Next closeFailed(Connection& client, const char* reason);
    Next refuse(Connection& client, const std::string& line);

    Received receiveRequest(Connection& client);
    Connection::Input receiveMore(Connection& client);
    bool takeLineEnd(Connection& client) const;
    bool findEnd(const Connection& client, std::size_t searched);
    void takeRequest(Connection& client) const;
    bool checkFirstLine(Connection& client, std::size_t searched, bool isComplete) const;
    void checkSize();
    void logBytes(std::string_view bytes) const;

    void sendAll(const Connection& client, std::span<std::string_view> pieces) const;

    int closeNow(int sock);

    /// The memory of a request or reply of more bytes is given back some time after it.
    static constexpr std::size_t largeSize = std::size_t{256} * 1024;
    /// Unread bytes of many clients that are more than this each are worth giving back, too.
    static constexpr std::size_t smallRest = std::size_t{4} * 1024;

    SocketWatch watch_;
    FileDesc peerUsers_;
    /// What clients' requests are received into, one client at a time.
    ByteBuffer input_;
    /// The request that is being served, without its terminator; part of its client's input.
    std::string_view request_;
    MemoryStream params_;
    /// Closed in this turn, maybe while a request of theirs is still at work; they go with the
    /// next.
    std::vector<std::unique_ptr<Connection>> closed_;
    FreedMemory freedMemory_;
    /// Set while the process is out of descriptors: until then no listener is watched.
    Deadline listenersPausedUntil_;
    std::chrono::steady_clock::time_point nextForeignWarning_{};
    std::chrono::steady_clock::time_point nextUserWarning_{};
};

}  // namespace corvane
