#include <signal.h>
#include <unistd.h>

#include <iostream>

#include "corvanectl/completion.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/invocation.h"
#include "corvanectl/prompt.h"
#include "corvanectl/run_command.h"
#include "corvanectl/standard_output.h"
#include "corvanectl/terminal.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

int printWords(const Invocation& invocation) {
    if (invocation.parameters.empty()) {
        std::cout << completionWords();
    }
    for (const std::string& word : completions(invocation.parameters, invocation.endpoint)) {
        std::cout << word << '\n';
    }
    return succeeded;
}

int run(const Invocation& invocation) {
    switch (invocation.mode) {
        case Invocation::Mode::Complete:
            return printWords(invocation);
        case Invocation::Mode::Prompt:
            return runPrompt(invocation);
        default:
            return runInvocation(invocation);
    }
}

// As any program ends that writes to a pipe which nobody reads: without a message, by the signal.
void endByBrokenPipe() {
    static_cast<void>(::signal(SIGPIPE, SIG_DFL));
    static_cast<void>(::raise(SIGPIPE));
}

int runAndReport(int argc, const char* const* argv) {
    const StandardOutput output;
    const bool atTerminal = isTerminal(STDIN_FILENO) && isTerminal(STDOUT_FILENO);
    return reportingFailures([&] {
        const int status = run(parseInvocation(argc, argv, {}, atTerminal));
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
