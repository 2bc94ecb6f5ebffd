#include <signal.h>
#include <unistd.h>

#include <iostream>

#include "corvanectl/exit_status.h"
#include "corvanectl/invocation.h"
#include "corvanectl/run_command.h"
#include "corvanectl/standard_output.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

int run(const Invocation& invocation) {
    switch (invocation.mode) {
        case Invocation::Mode::Help:
            std::cout << helpText();
            return succeeded;
        case Invocation::Mode::Version:
            std::cout << "corvanectl " << CORVANE_VERSION << '\n';
            return succeeded;
        case Invocation::Mode::Complete:
            std::cout << completionWords();
            return succeeded;
        case Invocation::Mode::Request:
            break;
    }
    return runCommand(invocation);
}

// As any program ends that writes to a pipe which nobody reads: without a message, by the signal.
void endByBrokenPipe() {
    static_cast<void>(::signal(SIGPIPE, SIG_DFL));
    static_cast<void>(::raise(SIGPIPE));
}

int runAndReport(int argc, const char* const* argv) {
    const StandardOutput output;
    return reportingFailures([&] {
        const int status = run(parseInvocation(argc, argv));
        if (std::cout.flush()) {
            return status;
        }
        if (output.hasNoReader()) {
            endByBrokenPipe();
        }
        throw Exception("cannot write to standard output");
    });
}

}  // namespace
}  // namespace corvane::ctl

int main(int argc, char** argv) {
    // A peer that goes away is reported like any other failure.
    static_cast<void>(::signal(SIGPIPE, SIG_IGN));
    return corvane::ctl::runAndReport(argc, argv);
}
