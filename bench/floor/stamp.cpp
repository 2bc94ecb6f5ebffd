// The program that launching is measured with: writes the time of its start, in nanoseconds of
// the monotonic clock, into "stamp.fifo" beside itself. It is started with no open descriptor.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "bench/common/clock.h"

int main(int, char** argv) {
    const std::int64_t started = corvane::bench::nowNanos();
    const std::string program = argv[0];
    const std::string fifo = program.substr(0, program.rfind('/') + 1) + "stamp.fifo";
    const int descriptor = ::open(fifo.c_str(), O_WRONLY);
    return ::write(descriptor, &started, sizeof started) == sizeof started ? 0 : 1;
}
