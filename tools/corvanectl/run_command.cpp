#include "corvanectl/run_command.h"

#include <unistd.h>

#include <iostream>
#include <optional>
#include <string>

#include "corvanectl/command_list.h"
#include "corvanectl/exchange.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/input.h"
#include "corvanectl/json.h"
#include "corvanectl/listing.h"
#include "corvanectl/local/reason.h"
#include "corvanectl/local/refusal.h"
#include "corvanectl/local_command.h"
#include "corvanectl/output.h"
#include "corvanectl/plain_words.h"
#include "corvanectl/progress.h"
#include "corvanectl/replace.h"
#include "corvanectl/reply.h"
#include "corvanectl/request.h"
#include "corvanectl/suggestion.h"
#include "corvanectl/terminal.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

bool isOpenText(const Reply& reply) {
    return !reply.details.empty() && reply.details.back().isText &&
           !reply.details.back().value.empty() && !endsWith(reply.details.back().value, "\n");
}

void printForPeople(const Invocation& invocation, const Reply& reply) {
    const bool onTerminal = isTerminal(STDOUT_FILENO);
    if (isListing(reply) && invocation.longListing) {
        printLong(reply.details, onTerminal, std::cout);
    } else if (isListing(reply) && onTerminal) {
        printColumns(reply.details, terminalWidth(STDOUT_FILENO), std::cout);
    } else {
        printDetails(reply, std::cout);
        if (onTerminal && isOpenText(reply)) {
            std::cout << '\n';  // what follows begins on a line of its own
        }
    }
}

struct Answer {
    /// Nothing when the server has closed the connection instead.
    std::optional<std::string> reply;
    std::string client;
    bool isFromThisMachine;
};

int showReply(const Invocation& invocation, const Answer& answer, const FailureLog& log) {
    const std::string& text = *answer.reply;
    const Reply reply = parseReply(text);
    if (invocation.xml) {
        std::cout << text << '\n';
    } else if (invocation.json) {
        std::cout << toJson(invocation.command, reply) << '\n';
    } else if (reply.ok) {
        printForPeople(invocation, reply);
    } else {
        const std::string why =
            reasonFor(invocation, log, answer.client, answer.isFromThisMachine, invocation.command);
        std::cerr << "corvanectl: " << describeFailure(invocation.command, reply, why) << '\n';
    }
    return reply.ok ? succeeded : answeredFailed;
}

// The end of the connection is the answer to "shutdown".
int showEnd(const Invocation& invocation) {
    if (invocation.json) {
        Reply ended;
        ended.ok = true;
        std::cout << toJson(invocation.command, ended) << '\n';
    }
    return succeeded;
}

Answer send(const Invocation& invocation, const std::string& text) {
    ProgressLine progress;
    Connection connection(invocation.endpoint, progress.observer());
    const std::string client = connection.ownAddress();
    const bool isHere = connection.staysOnThisMachine();
    connection.send(text);
    return {connection.receive(), client, isHere};
}

int request(const Invocation& invocation) {
    const CommandUsage* command = findCommand(invocation.command);
    if (command == nullptr) {
        throw unknownCommand(invocation.command);
    }
    const std::string text =
        makeRequest(*command, invocation.parameters, [] { return readInput(STDIN_FILENO); });
    const FailureLog log(queryForLog(invocation.log, invocation.endpoint.port));
    const Answer answer = send(invocation, text);
    if (answer.reply) {
        return showReply(invocation, answer, log);
    }
    const bool isEnd = invocation.command == "shutdown";
    const std::optional<std::string> user =
        answer.isFromThisMachine ? whoRefuses(invocation.endpoint.port, isEnd) : std::nullopt;
    if (isEnd && !user) {
        return showEnd(invocation);
    }
    throw Exception(
        "the server has closed the connection without a reply" +
        (user ? concatenate("; it is ", *user, "'s, and may serve no other user") : std::string()));
}

}  // namespace

int runCommand(const Invocation& invocation) {
    const LocalCommand* const local =
        findLocalCommand(invocation.command, invocation.parameters.size());
    if (local == nullptr) {
        return invocation.replace ? replaceFile(invocation) : request(invocation);
    }
    if (invocation.parameters.size() < local->usage.fewest() ||
        invocation.parameters.size() > local->usage.most()) {
        throw Exception("wrong number of parameters, usage: " + usageLine(local->usage));
    }
    return local->run(invocation);
}

int runInvocation(const Invocation& invocation) {
    switch (invocation.mode) {
        case Invocation::Mode::Help:
            std::cout << helpText();
            return succeeded;
        case Invocation::Mode::Version:
            std::cout << "corvanectl " << CORVANE_VERSION << '\n';
            return succeeded;
        default:
            return runCommand(invocation);
    }
}

int reportingFailures(const std::function<int()>& work) {
    try {
        return work();
    } catch (const std::exception& e) {
        std::cerr << "corvanectl: " << plainWords(e) << '\n';
        return notAnswered;
    }
}

}  // namespace corvane::ctl
