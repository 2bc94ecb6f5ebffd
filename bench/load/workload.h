// What the load generator can do to a server. Every mode sends the next request only when the
// reply to the one before is complete, as the clients of the server do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane::bench {

struct Workload {
    int port = 0;
    std::string request;     // as sent, terminator included
    char terminator = '\0';  // last byte of a reply
    std::string expected;    // text that every reply must contain
    std::string remove;      // file that is removed before each request of one connection
    int connections = 1;
    int silent = 0;    // further connections, which only make one request before the others begin
    int requests = 1;  // measured ones
    int warmup = 0;    // sent before them and not counted
};

struct Measurement {
    std::vector<std::int64_t> samples;  // nanoseconds of each request
    std::vector<std::int64_t>
        firstSamples;            // launch: nanoseconds to the program's first instruction
    double seconds = 0;          // of all measured requests together
    std::size_t replyBytes = 0;  // of the last reply
};

/// One connection, blocking: send, wait for the reply, send again.
Measurement runOneConnection(const Workload& load);

/// Many connections at once, each with one request under way.
Measurement runManyConnections(const Workload& load);

/// Connect, one request, close; a sample is one whole cycle.
Measurement runChurn(const Workload& load);

/// Requests that start a program, which writes the time of its first instruction into `fifo`.
Measurement runLaunch(const Workload& load, const std::string& fifo);

/// Starts `command` anew for each sample: from the start to the first complete reply.
Measurement runStartup(const Workload& load, const std::vector<std::string>& command);

}  // namespace corvane::bench
