// Load generator: drives one server and prints one line of JSON with the times of its replies.
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>

#include "bench/common/arguments.h"
#include "bench/common/clock.h"
#include "bench/load/workload.h"

namespace corvane::bench {

namespace {

constexpr const char* USAGE =
    "usage: load requests|churn|launch|startup --port N (--text TEXT | --file FILE)\n"
    "            [--terminator BYTE] [--expect TEXT] [--connections N] [--silent N] [--requests "
    "N]\n"
    "            [--warmup N]\n"
    "            [--remove FILE] [--fifo FILE] [-- COMMAND...]\n";

Workload workloadFrom(const Arguments& arguments) {
    Workload load;
    load.port = arguments.number("port", 0);
    load.terminator = static_cast<char>(arguments.number("terminator", 0));
    const std::string file = arguments.text("file", "");
    load.request = file.empty() ? arguments.text("text", "") : readWholeFile(file);
    load.request += load.terminator;
    load.expected = arguments.text("expect", "");
    load.remove = arguments.text("remove", "");
    load.connections = arguments.number("connections", 1);
    load.silent = arguments.number("silent", 0);
    load.requests = arguments.number("requests", 1);
    load.warmup = arguments.number("warmup", 0);
    return load;
}

Measurement run(const Arguments& arguments) {
    const Workload load = workloadFrom(arguments);
    if (arguments.mode() == "requests") {
        return load.connections == 1 ? runOneConnection(load) : runManyConnections(load);
    }
    if (arguments.mode() == "churn") {
        return runChurn(load);
    }
    if (arguments.mode() == "launch") {
        return runLaunch(load, arguments.text("fifo", ""));
    }
    if (arguments.mode() == "startup") {
        return runStartup(load, arguments.command());
    }
    throw std::invalid_argument("unknown mode " + arguments.mode());
}

void print(Measurement& result) {
    const auto count = static_cast<double>(result.samples.size());
    std::printf(
        "{\"requests\": %.0f, \"per_second\": %.1f, \"p50_us\": %.3f, \"p99_us\": %.3f, "
        "\"first_p50_us\": %.3f, \"reply_bytes\": %zu}\n",
        count, count / result.seconds, percentileMicros(result.samples, 50),
        percentileMicros(result.samples, 99), percentileMicros(result.firstSamples, 50),
        result.replyBytes);
}

}  // namespace

}  // namespace corvane::bench

int main(int argc, char** argv) {
    try {
        corvane::bench::Measurement result = corvane::bench::run({argc, argv});
        corvane::bench::print(result);
        return 0;
    } catch (const std::invalid_argument& error) {
        std::cerr << "load: " << error.what() << '\n' << corvane::bench::USAGE;
    } catch (const std::exception& error) {
        std::cerr << "load: " << error.what() << '\n';
    }
    return 1;
}
