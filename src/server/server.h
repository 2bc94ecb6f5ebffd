// A small single-threaded TCP server: it waits for sockets, accepts connections, reads one request
// at a time (text ended by a 0x00 or 0x01 byte) and hands it to processClientCommand(), which a
// derived class overrides. It stops on the request "shutdown", after a time without activity, when
// a client disconnects and the configuration asks for it, or when its listeners are closed by
// deinitServer().
#pragma once

#include <sys/select.h>

#include <chrono>
#include <istream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/waiting.h"
#include "server/readable_sockets.h"
#include "server/server_options.h"
#include "server/surplus.h"
#include "text/byte_buffer.h"
#include "text/memory_stream.h"

namespace corvane {

class Server {
  public:
    Server() = default;
    virtual ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    Server(Server&&) = delete;
    Server& operator=(Server&&) = delete;

    /// Opens the listener on `address` and `port`.
    virtual void initServer();
    /// Handles one request: its first line and a stream over the other lines. This one only logs.
    virtual void processClientCommand(int sock, const std::string& cmd, std::istream& params);
    /// Tells the client that its request cannot be served at all. `cmd` is not escaped.
    virtual void sendFatalError(int sock, const std::string& cmd);

    /// Opens one more IPv4 listener. An empty address means all interfaces; port 0 lets the system
    /// choose. Throws SocketException or BindException.
    void initListener(const std::string& listenAddress, int listenPort);

    /// Serves until it is told to stop; closes the clients then. Throws Exception when there is no
    /// listener (any more) and SocketException when waiting fails, both without closing anything.
    void process();

    /// Accepts one connection.
    void processListener(int listenSock);
    /// Reads and handles one request. Returns false when the server has to stop.
    bool processClient(int sock);
    /// Reads one request, without its terminator; what follows it is for the next call. Returns
    /// false, with one byte consumed, when the request begins with CR or LF. Throws
    /// SocketClosedException and SocketException; ForeignRequest for what a browser sends;
    /// Exception when the request exceeds its limits.
    bool readRequest(int sock, ByteBuffer& out);

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

    /// Sets every descriptor of `socks`; returns the largest, 0 for none.
    static int addSocketsToFdSet(fd_set& set, const std::vector<int>& socks);
    /// The first of `socks` that is set, or -1.
    static int isSocketsEvent(const fd_set& set, const std::vector<int>& socks);
    static void addSocket(std::vector<int>& socks, int sock);
    /// Returns whether the socket was there.
    static bool removeSocket(std::vector<int>& socks, int sock);

    /// Closes a socket, after a half-close when `graceful`, and removes it from `socks`.
    void closeSocket(std::vector<int>& socks, int sock, bool graceful);
    /// Closes a client after an error or its disconnection. Returns false when
    /// options.shutdownOnDisconnect makes the server stop.
    bool errorCloseSocket(int sock, bool graceful);
    void deinitSockets(std::vector<int>& socks, bool graceful);
    void deinitListeners();
    void deinitClients();
    /// Closes everything, so that process() ends. Safe to call again, and from a signal handler
    /// inside a wait.
    void deinitServer();

    std::vector<int> listeners;
    /// In the order in which they were accepted.
    std::vector<int> clients;
    /// To be set before initServer().
    ServerOptions options;

  protected:
    bool isAllowed(const std::string& cmd) const;
    /// To be called where work may leave much freed memory behind: it is given back to the system a
    /// second after the last such call.
    void expectFreedMemory() { workWasLarge_ = true; }

  private:
    int waitForEvent();
    void returnMemory();
    bool serveNext();
    bool serveRequest(int sock);
    void dropRequest();
    bool closeFinished(int sock, bool graceful);
    enum class Received { Request, LineEnd, Nothing, End };
    Received receiveRequest(int sock, ByteBuffer& out);
    bool refuseForeignRequest(int sock, const std::string& line);
    std::optional<std::size_t> receive(int sock, ByteBuffer& out, const Deadline& deadline);
    static bool checkFirstLine(std::string_view request, std::size_t alreadySearched);
    void logBytes(std::string_view bytes) const;

    /// The memory of a request or reply of more bytes is given back some time after it.
    static constexpr std::size_t largeSize = std::size_t{256} * 1024;

    ReadableSockets readable_;
    Surplus surplus_;
    ByteBuffer request_;
    MemoryStream params_;
    /// Whether there was large work since the last wait.
    bool workWasLarge_ = false;
    /// Set while the freed memory of large work is kept for more of it.
    Deadline freedMemoryKeptUntil_;
    /// Set while the process is out of descriptors: until then no listener is waited for.
    Deadline listenersPausedUntil_;
    std::chrono::steady_clock::time_point nextForeignWarning_{};
};

/// Turns a result of recv(2) into an exception, or nothing when bytes came.
void checkRecvStatus(int sock, long result);
/// Turns a result of send(2) into an exception, or nothing when it is not -1.
void checkSendError(int sock, long sendResult);

}  // namespace corvane
