// The window tool: reports and changes where a window lies on the screen. The server runs it and
// reads what it prints; see the manual page for the command line.
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>

#include "cvnwinfo/arguments.h"
#include "cvnwinfo/errors.h"
#include "cvnwinfo/process_guard.h"
#include "cvnwinfo/window_system.h"

namespace {

using namespace corvane::wintool;

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;
constexpr std::chrono::seconds runningTime(3);

void print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        throw WindowError("cannot write to standard output");
    }
}

std::string join(int first, int second) {
    return std::to_string(first) + "," + std::to_string(second);
}

std::string reportScreen() {
    const Size size = screenSize();
    return join(size.width, size.height) + "\n";
}

std::string reportWindow(const std::string& title) {
    const auto [origin, size] = windowRectangle(title);
    return join(origin.x, origin.y) + "," + join(size.width, size.height) + "\n";
}

void run(const Arguments& arguments) {
    switch (arguments.action) {
        case Action::showHelp:
            print(helpText);
            break;
        case Action::showVersion:
            print("cvnwinfo " CVNWINFO_VERSION "\n");
            break;
        case Action::reportScreen:
            print(reportScreen());
            break;
        case Action::reportWindow:
            print(reportWindow(arguments.title));
            break;
        case Action::placeWindow:
            placeWindow(arguments.title, arguments.position, arguments.size);
            break;
    }
}

int fail(const std::exception& error, int status, std::string_view advice = "") {
    const std::string message = "cvnwinfo: " + std::string(error.what()) + std::string(advice);
    // When even this fails, the exit status is all that can still be told.
    static_cast<void>(std::fprintf(stderr, "%s\n", message.c_str()));
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    ignoreBrokenPipes();
    limitRunningTime(runningTime, noAnswerMessage);
    try {
        const std::span<const char* const> words(argv, static_cast<std::size_t>(argc));
        run(parseArguments(words.subspan(words.empty() ? 0 : 1)));
        return 0;
    } catch (const UsageError& error) {
        return fail(error, exitUsage, " (see cvnwinfo --help)");
    } catch (const std::exception& error) {
        return fail(error, exitFailure);
    }
}
