#include <unistd.h>

#include "bench/common/clock.h"
#include "bench/common/net.h"
#include "bench/load/workload.h"

namespace corvane::bench {

namespace {

/// Removing belongs to no sample: a file that is written anew costs less than one that is
/// truncated, which some file systems write to the disk at once.
void prepare(const Workload& load) {
    if (!load.remove.empty()) {
        ::unlink(load.remove.c_str());
    }
}

}  // namespace

Measurement runOneConnection(const Workload& load) {
    Measurement result;
    result.samples.reserve(static_cast<std::size_t>(load.requests));
    ReplyReader reader(load.terminator, load.expected);
    const Descriptor connection = connectTo(load.port);
    setNoDelay(connection.get());

    for (int i = -load.warmup; i < load.requests; ++i) {
        prepare(load);
        const std::int64_t sent = nowNanos();
        sendAll(connection.get(), load.request);
        result.replyBytes = reader.receive(connection.get());
        const std::int64_t took = nowNanos() - sent;
        if (i >= 0) {
            result.samples.push_back(took);
            result.seconds += static_cast<double>(took) / 1e9;
        }
    }
    return result;
}

Measurement runChurn(const Workload& load) {
    Measurement result;
    ReplyReader reader(load.terminator, load.expected);
    std::int64_t begin = 0;
    std::int64_t opened = nowNanos();
    for (int i = -load.warmup; i < load.requests; ++i) {
        if (i == 0) {
            begin = opened;
        }
        Descriptor connection = connectTo(load.port);
        sendAll(connection.get(), load.request);
        result.replyBytes = reader.receive(connection.get());
        connection.close();
        const std::int64_t closed = nowNanos();
        if (i >= 0) {
            result.samples.push_back(closed - opened);
        }
        opened = closed;
    }
    result.seconds = static_cast<double>(opened - begin) / 1e9;
    return result;
}

}  // namespace corvane::bench
