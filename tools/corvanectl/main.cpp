#include <signal.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <optional>

#include "corvanectl/command_list.h"
#include "corvanectl/exchange.h"
#include "corvanectl/input.h"
#include "corvanectl/invocation.h"
#include "corvanectl/output.h"
#include "corvanectl/reply.h"
#include "corvanectl/request.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

constexpr int succeeded = 0;
constexpr int answeredFailed = 1;
constexpr int notAnswered = 2;

int showReply(const Invocation& invocation, const std::string& text) {
    const Reply reply = parseReply(text);
    if (invocation.xml) {
        std::cout << text << '\n';
    } else if (reply.ok) {
        printDetails(reply, std::cout);
    } else {
        std::cerr << "corvanectl: " << describeFailure(invocation.command, reply) << '\n';
    }
    return reply.ok ? succeeded : answeredFailed;
}

int request(const Invocation& invocation) {
    const CommandUsage* command = findCommand(invocation.command);
    if (command == nullptr) {
        throw Exception("unknown command '" + invocation.command + "', try --help");
    }
    const std::string text =
        makeRequest(*command, invocation.parameters, [] { return readInput(STDIN_FILENO); });
    const std::optional<std::string> reply = ctl::exchange(invocation.endpoint, text);
    if (reply) {
        return showReply(invocation, *reply);
    }
    if (invocation.command == "shutdown") {
        return succeeded;  // it is answered by the end of the connection
    }
    throw Exception("the server has closed the connection without a reply");
}

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
    return request(invocation);
}

int runAndReport(int argc, const char* const* argv) {
    try {
        const int status = run(parseInvocation(argc, argv));
        if (!std::cout.flush()) {
            throw Exception("cannot write to standard output");
        }
        return status;
    } catch (const std::exception& e) {
        std::cerr << "corvanectl: " << e.what() << '\n';
        return notAnswered;
    }
}

}  // namespace
}  // namespace corvane::ctl

int main(int argc, char** argv) {
    // A peer or a reader that goes away is reported like any other failure.
    static_cast<void>(::signal(SIGPIPE, SIG_IGN));
    return corvane::ctl::runAndReport(argc, argv);
}
