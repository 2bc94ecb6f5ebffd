// Taking one request from a socket: looking ahead, finding its end, consuming exactly that much.
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <log4cpp/Priority.hh>
#include <string>

#include "log/log.h"
#include "server/server.h"
#include "text/byte_buffer.h"

namespace corvane {
namespace {

/// Both ends of a connection; a whole request fits in its buffer.
class SocketPair {
  public:
    SocketPair() {
        ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data());
        const int room = 1 << 20;
        ::setsockopt(client(), SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    }
    SocketPair(const SocketPair&) = delete;
    SocketPair& operator=(const SocketPair&) = delete;
    ~SocketPair() { ::close(client()); }

    int client() const { return ends_[0]; }
    int server() const { return ends_[1]; }

  private:
    std::array<int, 2> ends_{-1, -1};
};

void readRequest(benchmark::State& state) {
    LogLevel::set(log4cpp::Priority::NOTICE);
    const SocketPair connection;
    const std::string request = std::string(static_cast<std::size_t>(state.range(0)), 'x') + '\0';
    Server server;
    server.addClient(FileDesc(connection.server()), {});
    ByteBuffer received;
    for ([[maybe_unused]] auto _ : state) {
        if (::send(connection.client(), request.data(), request.size(), 0) !=
                static_cast<ssize_t>(request.size()) ||
            !server.readRequest(connection.server(), received)) {
            state.SkipWithError("the request did not arrive");
            break;
        }
        benchmark::DoNotOptimize(received.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(request.size()));
}

BENCHMARK(readRequest)->ArgName("bytes")->Arg(20)->Arg(1024)->Arg(65536);

}  // namespace
}  // namespace corvane
