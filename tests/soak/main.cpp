// Runs the scenarios, one after the other, against the server given on the command line:
//   corvane-soak SERVER CHILD [SCALE]
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "soak/scenarios.h"

namespace soak {

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
}  // namespace soak

int main(int argc, char** argv) {
    if (argc < 3) {
        static_cast<void>(std::fputs("usage: corvane-soak SERVER CHILD [SCALE]\n", stderr));
        return 2;
    }
    const soak::Options options{argv[1], argv[2], argc > 3 ? std::strtod(argv[3], nullptr) : 1.0};
    soak::raiseDescriptorLimit();
    bool all = true;
    for (const soak::Scenario& scenario : soak::scenarios) {
        all = soak::survived(scenario, options) && all;
    }
    return all ? 0 : 1;
}
