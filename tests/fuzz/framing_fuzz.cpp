// Request framing: however the bytes arrive, in one piece, in two at any place or one by one, the
// server sees the requests that a plain reader sees. The pieces are sent by a signal handler, which
// runs exactly when the server waits for more.
#include <signal.h>
#include <sys/socket.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "platform/waiting.h"
#include "server/request_guard.h"
#include "server/server.h"

namespace {

using namespace corvane;

// Every input is sent once for each place where it can be cut.
constexpr std::size_t longestInput = 4096;
constexpr std::size_t mostCuts = 4;
// Longer inputs are not sent byte by byte.
constexpr std::size_t longestDrip = 128;
constexpr std::size_t longestLine = 1023;
constexpr std::size_t readAhead = 16384;

using Requests = std::vector<std::string>;

// What is still to be sent, and where.
std::string_view unsent;
std::size_t pieceSize = 0;
int clientEnd = -1;

void sendPiece() {
    const std::string_view piece = unsent.substr(0, pieceSize);
    fuzz::require(
        piece.empty() || ::write(clientEnd, piece.data(), piece.size()) == std::ssize(piece),
        "the socket takes a piece");
    unsent.remove_prefix(piece.size());
    if (unsent.empty()) {
        ::shutdown(clientEnd, SHUT_WR);
    } else {
        static_cast<void>(::raise(SIGCHLD));  // delivered in the next wait
    }
}

void onWait(int /*sig*/, siginfo_t* /*info*/, void* context) {
    const int savedErrno = errno;
    sendPiece();
    // One piece at a time, also when the wait lets in what is pending without an end.
    sigaddset(&static_cast<ucontext_t*>(context)->uc_sigmask, SIGCHLD);
    errno = savedErrno;
}

void prepareSignals() {
    deliverSignalsOnlyInWaits();
    struct sigaction action {};
    action.sa_sigaction = onWait;
    action.sa_flags = SA_SIGINFO;
    ::sigaction(SIGCHLD, &action, nullptr);
    sigset_t stoppable;
    sigemptyset(&stoppable);
    sigaddset(&stoppable, SIGTERM);
    sigaddset(&stoppable, SIGINT);
    ::sigprocmask(SIG_UNBLOCK, &stoppable, nullptr);
}

class RecordingServer : public Server {
  public:
    void processClientCommand(int /*sock*/, const std::string& cmd, std::istream& params) override {
        requests.push_back(cmd + '\n' + std::string(std::istreambuf_iterator<char>(params), {}));
    }

    Requests requests;
};

Requests served(std::string_view bytes, std::size_t firstPiece, std::size_t otherPieces) {
    std::array<int, 2> ends{};
    fuzz::require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0, "sockets can be made");
    clientEnd = ends[0];
    unsent = bytes;
    pieceSize = firstPiece;
    sendPiece();
    pieceSize = otherPieces;

    RecordingServer server;
    server.addClient(FileDesc(ends[1]), {});
    do {
        static_cast<void>(waitForSocket(ends[1], Direction::Read, std::nullopt));
    } while (server.processClient(ends[1]) && !server.clients.empty());
    unsent = {};
    server.deinitServer();
    ::close(clientEnd);
    return server.requests;
}

bool isForeign(std::string_view request) {
    if (isTlsGreeting(request) || isHttpBeginning(request)) {
        return true;
    }
    const std::size_t end = request.find('\n');
    std::string_view line = request.substr(0, end);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return end != std::string_view::npos && isHttpRequestLine(line);
}

// Only what arrives together is known as STUN, or as a TLS greeting in the form of SSL 2, which
// holds a terminator.
bool dependsOnArrival(std::string_view bytes) {
    return bytes.find("\x21\x12\xA4\x42") != std::string_view::npos ||
           bytes.find("\x01\x03") != std::string_view::npos;
}

// The command and the parameters of a request, or nothing when it has no command.
std::string entry(std::string_view request) {
    std::string line(request.substr(0, request.find('\n')));
    if (request.empty() || line.size() > longestLine) {
        return "";
    }
    const std::string_view rest = request.substr(std::min(request.size(), line.size() + 1));
    line.erase(line.find_last_not_of("\r\n") + 1);
    return line + '\n' + std::string(rest);
}

Requests expected(std::string_view bytes) {
    Requests requests;
    while (!bytes.empty()) {
        if (bytes.front() == '\r' || bytes.front() == '\n') {
            bytes.remove_prefix(1);
            continue;
        }
        const std::size_t end = bytes.find_first_of(std::string_view("\0\x01", 2));
        const std::string_view request = bytes.substr(0, end);
        if (isForeign(request) || end == std::string_view::npos) {
            break;
        }
        const std::string found = entry(request);
        if (found == "shutdown\n" || found.starts_with("shutdown\n")) {
            break;
        }
        if (!found.empty()) {
            requests.push_back(found);
        }
        bytes.remove_prefix(end + 1);
    }
    return requests;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool prepared = (prepareSignals(), true);
    static_cast<void>(prepared);
    const std::string_view bytes = fuzz::asText(data, std::min(size, longestInput));
    if (dependsOnArrival(bytes)) {
        return 0;
    }
    const Requests wanted = expected(bytes);
    fuzz::require(served(bytes, bytes.size(), readAhead) == wanted,
                  "requests are found in one piece");
    fuzz::require(bytes.size() > longestDrip || served(bytes, 1, 1) == wanted,
                  "requests are found byte by byte");
    const std::size_t step = bytes.size() / mostCuts + 1;
    for (std::size_t cut = 1; cut < bytes.size(); cut += step) {
        fuzz::require(served(bytes, cut, readAhead) == wanted, "requests are found in two pieces");
    }
    return 0;
}
