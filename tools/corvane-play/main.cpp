#include <signal.h>

#include <exception>
#include <iostream>
#include <span>

#include "corvane-play/app.h"
#include "corvane-play/options.h"
#include "corvane-play/process.h"
#include "corvane-play/real_path.h"
#include "fileutil/paths.h"

namespace corvane::play {
namespace {

constexpr int succeeded = 0;
constexpr int failed = 1;
constexpr int misused = 2;

int run(std::span<const char* const> words) {
    const Options options = parseOptions(words.subspan(1));
    if (options.action == Options::Action::Help) {
        std::cout << helpText;
        return succeeded;
    }
    if (options.action == Options::Action::Version) {
        std::cout << "corvane-play " << CORVANE_VERSION << '\n';
        return succeeded;
    }
    return App(options, getDirectory(realPath(findProgram(words.front())))).run();
}

}  // namespace
}  // namespace corvane::play

int main(int argc, char** argv) {
    using namespace corvane::play;
    static_cast<void>(::signal(SIGPIPE, SIG_IGN));
    try {
        return run({argv, static_cast<std::size_t>(argc)});
    } catch (const UsageError& e) {
        std::cerr << "corvane-play: " << e.what() << "\nTry corvane-play --help.\n";
        return misused;
    } catch (const std::exception& e) {
        std::cerr << "corvane-play: " << e.what() << '\n';
        return failed;
    }
}
