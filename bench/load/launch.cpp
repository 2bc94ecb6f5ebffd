#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <stdexcept>

#include "bench/common/clock.h"
#include "bench/common/net.h"
#include "bench/load/workload.h"

namespace corvane::bench {

namespace {

constexpr int START_TIMEOUT_MILLIS = 5000;
constexpr useconds_t REST_MICROS = 2000;

std::int64_t receiveStamp(int fifo) {
    pollfd wanted{fifo, POLLIN, 0};
    std::int64_t stamp = 0;
    if (::poll(&wanted, 1, START_TIMEOUT_MILLIS) != 1 ||
        ::read(fifo, &stamp, sizeof stamp) != sizeof stamp) {
        throw std::runtime_error("the program that was to be started gave no sign of life");
    }
    return stamp;
}

}  // namespace

Measurement runLaunch(const Workload& load, const std::string& fifo) {
    Measurement result;
    ReplyReader reader(load.terminator, load.expected);
    // Open for both directions, so that neither this open nor the program's waits for the other.
    const Descriptor stamps(::open(fifo.c_str(), O_RDWR | O_CLOEXEC));
    if (stamps.get() == -1) {
        throwErrno("open fifo");
    }
    const Descriptor connection = connectTo(load.port);
    setNoDelay(connection.get());

    for (int i = -load.warmup; i < load.requests; ++i) {
        const std::int64_t sent = nowNanos();
        sendAll(connection.get(), load.request);
        result.replyBytes = reader.receive(connection.get());
        const std::int64_t replied = nowNanos();
        const std::int64_t started = receiveStamp(stamps.get());
        if (i >= 0) {
            result.samples.push_back(replied - sent);
            result.firstSamples.push_back(started - sent);
            result.seconds += static_cast<double>(replied - sent) / 1e9;
        }
        ::usleep(REST_MICROS);  // the program's end and its reaping belong to no sample
    }
    return result;
}

}  // namespace corvane::bench
