// Runs the scenarios, one after the other, against this build's server:
//   corvane-soak [SCALE]
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "soak/scenarios.h"

namespace corvane::soak {

std::size_t Options::scaled(std::size_t full, std::size_t least) const {
    return std::max(least, static_cast<std::size_t>(static_cast<double>(full) * scale));
}

namespace {

struct Scenario {
    const char* name;
    void (*run)(const Options& options);
};

constexpr std::array<Scenario, 9> scenarios{{{"requests", manyRequests},
                                             {"clients", manyClients},
                                             {"connections", manyConnections},
                                             {"child signals", childSignals},
                                             {"terminations", terminations},
                                             {"out of descriptors", outOfDescriptors},
                                             {"beyond select", beyondSelect},
                                             {"slow clients", slowClients},
                                             {"surroundings", vanishingSurroundings}}};

bool survived(const Scenario& scenario, const Options& options) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    std::printf("%-20s", scenario.name);
    static_cast<void>(std::fflush(stdout));
    try {
        scenario.run(options);
    } catch (const std::exception& e) {
        std::printf("BROKEN: %s\n", e.what());
        return false;
    }
    std::printf("  (%.1f s)\n", std::chrono::duration<double>(Clock::now() - start).count());
    static_cast<void>(std::fflush(stdout));
    return true;
}

// The clients of this process need as many descriptors as the server.
void raiseDescriptorLimit() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace
}  // namespace corvane::soak

int main(int argc, char** argv) {
    using namespace corvane::soak;
    const Options options{argc > 1 ? std::strtod(argv[1], nullptr) : 1.0};
    raiseDescriptorLimit();
    bool all = true;
    for (const Scenario& scenario : scenarios) {
        all = survived(scenario, options) && all;
    }
    return all ? 0 : 1;
}
