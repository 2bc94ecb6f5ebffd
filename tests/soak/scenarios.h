// The scenarios. Each starts servers of its own, prints one line of what was survived, and throws
// when a promise was broken.
#pragma once

#include <cstddef>

namespace corvane::soak {

struct Options {
    /// 1 for the full numbers; less for a shorter run.
    double scale = 1;

    /// `full` times the scale, at least `least`.
    std::size_t scaled(std::size_t full, std::size_t least) const;
};

/// Requests without end: replies right and in order, memory and descriptors flat.
void manyRequests(const Options& options);
/// As many clients at once as the server takes.
void manyClients(const Options& options);
/// Connections one after the other, half of them reset.
void manyConnections(const Options& options);

/// Children that end, are killed, stopped and continued at random moments, under load.
void childSignals(const Options& options);
/// SIGTERM at random moments under load.
void terminations(const Options& options);

/// No descriptor left.
void outOfDescriptors(const Options& options);
/// More descriptors than select(2) can wait for.
void beyondSelect(const Options& options);

/// Clients that send byte by byte, that vanish within a request, that do not read.
void slowClients(const Options& options);
/// The log, the working directory and the home directory vanish; the disk is full.
void vanishingSurroundings(const Options& options);

}  // namespace corvane::soak
