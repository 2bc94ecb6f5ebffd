// The floor servers: the fastest that the machine allows for each kind of request.
#include <exception>
#include <iostream>
#include <stdexcept>

#include "bench/common/arguments.h"
#include "bench/floor/handlers.h"

namespace corvane::bench {

namespace {

/// `fixed` is the file that holds the reply of the loop floor.
void serveMode(const std::string& mode, const std::string& fixed) {
    if (mode == "loop") {
        serve(fixedReply(readWholeFile(fixed) + '\0'), {.noDelay = false});
    }
    const FloorOptions large{.noDelay = true};
    if (mode == "write") {
        serve(writeFile(), large);
    }
    if (mode == "read") {
        serve(readFile(), large);
    }
    if (mode == "list") {
        serve(listDirectory(), large);
    }
    if (mode == "fork") {
        serve(launchByFork(), large);
    }
    if (mode == "spawn") {
        serve(launchBySpawn(), large);
    }
    throw std::invalid_argument(
        "usage: floor loop --reply FILE | write | read | list | fork | spawn");
}

}  // namespace

}  // namespace corvane::bench

int main(int argc, char** argv) {
    try {
        const corvane::bench::Arguments arguments(argc, argv);
        corvane::bench::serveMode(arguments.mode(), arguments.text("reply", ""));
    } catch (const std::exception& error) {
        std::cerr << "floor: " << error.what() << '\n';
    }
    return 1;
}
