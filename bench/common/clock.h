// Time stamps and their summary. The clock is the monotonic one of the system, whose readings may
// be compared between processes.
#pragma once

#include <time.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace corvane::bench {

/// Nanoseconds since an arbitrary moment that is the same for all processes.
inline std::int64_t nowNanos() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// The value below which `percent` of 100 samples lie, in microseconds; sorts the samples.
inline double percentileMicros(std::vector<std::int64_t>& samples, double percent) {
    if (samples.empty()) {
        return 0;
    }
    std::sort(samples.begin(), samples.end());
    const auto last = static_cast<double>(samples.size() - 1);
    return static_cast<double>(samples[static_cast<std::size_t>(last * percent / 100)]) / 1000;
}

}  // namespace corvane::bench
