// Asking for the user at the other end of a connection, which SAMEUSER does for each one.
#include <benchmark/benchmark.h>
#include <sys/socket.h>

#include "bench/common/net.h"
#include "platform/peer_user.h"

namespace corvane {
namespace {

void lookUpPeerUser(benchmark::State& state) {
    int port = 0;
    const bench::Descriptor listener = bench::listenOnLoopback(port);
    const bench::Descriptor client = bench::connectTo(port);
    const bench::Descriptor accepted(::accept(listener.get(), nullptr, nullptr));
    const FileDesc channel = platform::openPeerUsers();
    for ([[maybe_unused]] auto _ : state) {
        if (!platform::peerUser(channel, accepted.get())) {
            state.SkipWithError("no answer");
            break;
        }
    }
}

BENCHMARK(lookUpPeerUser);

}  // namespace
}  // namespace corvane
