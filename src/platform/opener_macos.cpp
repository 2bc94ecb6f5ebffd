// Launch Services is asked by a program beside the server (tools/cvnopen), which tells its own
// status; how, is said there.
#include <charconv>
#include <chrono>
#include <string>
#include <vector>

#include "platform/child.h"
#include "platform/opener.h"
#include "platform/process.h"
#include "text/exception.h"

namespace corvane::platform {
namespace {

using Result = Opening::Result;

constexpr const char* openerName = "cvnopen";
constexpr int exitNotAnAddress = 1;
constexpr int statusCannotExecute = 255;

// Starting an application takes its time, and its failure is known only then.
constexpr std::chrono::seconds patience{10};

// What the opener has printed when it ended with 0.
Opening printedStatus(const std::string& output) {
    int status = 0;
    const char* const end = output.data() + output.size();
    if (std::from_chars(output.data(), end, status).ec != std::errc()) {
        return {Result::Failed, statusCannotExecute};
    }
    return {status == 0 ? Result::Opened : Result::Failed, status};
}

Opening resultOf(Child& opener) {
    if (!opener.status()) {
        return {Result::Opened};
    }
    switch (const int exitCode = opener.exitCode(); exitCode) {
        case 0:
            return printedStatus(opener.wholeOutput(std::chrono::steady_clock::now() + patience));
        case exitNotAnAddress:
            return {Result::NotAnAddress};
        default:
            return {Result::Failed, exitCode};
    }
}

}  // namespace

std::string openerProgram(const std::string& ownDirectory) { return ownDirectory + openerName; }

Opening openAddress(const std::string& address, const std::string& ownDirectory) {
    const std::vector<std::string> command = {ownDirectory + openerName, "address", address};
    try {
        Child opener(Child::Capture::Output, Child::Group::Shared,
                     [&command] { becomeProgram(command, StandardStreams::OutputOnly); });
        opener.waitFor(std::chrono::steady_clock::now() + patience);
        opener.leave();
        return resultOf(opener);
    } catch (const Exception&) {  // no process can be started, or it prints without end
        return {Result::Failed, statusCannotExecute};
    }
}

bool openDocument(const std::string& path, const std::string& ownDirectory) {
    startProgram({ownDirectory + openerName, "document", path}, StandardStreams::NullDevice);
    return true;
}

}  // namespace corvane::platform
