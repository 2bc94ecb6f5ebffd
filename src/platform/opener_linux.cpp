#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/child.h"
#include "platform/opener.h"
#include "platform/process.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::platform {
namespace {

using Result = Opening::Result;

// An opener that still runs after this time has taken the job.
constexpr std::chrono::milliseconds patience{1000};

constexpr int statusCannotExecute = 255;

// Where a program is that PATH leads to; empty for nowhere.
std::string inPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    for (const std::string& directory : strExplode(path == nullptr ? "" : path, ":")) {
        std::string file = format("%s/%s", directory.c_str(), program.c_str());
        if (::access(file.c_str(), X_OK) == 0) {
            return file;
        }
    }
    return "";
}

// The command that opens something on this desktop; empty when there is none.
std::vector<std::string> openerCommand(const std::string& target) {
    if (!inPath("xdg-open").empty()) {
        return {"xdg-open", target};
    }
    if (!inPath("gio").empty()) {
        return {"gio", "open", target};
    }
    return {};
}

bool isSchemeCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '-' || c == '.';
}

// Scheme and characters as RFC 3986 wants them; bytes beyond ASCII are let through, as UTF-8.
bool isAddress(std::string_view text) {
    const std::size_t colon = text.find(':');
    const std::string_view scheme = text.substr(0, colon);
    if (colon == std::string_view::npos || scheme.empty() ||
        std::isalpha(static_cast<unsigned char>(scheme.front())) == 0 ||
        !std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter)) {
        return false;
    }
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= ' ' || byte == 0x7F ||
               std::string_view("\"<>\\^`{|}").find(c) != std::string_view::npos;
    });
}

int runOpener(const std::vector<std::string>& command) {
    try {
        Child opener(Child::Capture::Nothing, Child::Group::Shared,
                     [&command] { becomeProgram(command, StandardStreams::NullDevice); });
        opener.waitFor(std::chrono::steady_clock::now() + patience);
        opener.leave();
        return opener.exitCode();
    } catch (const IOException&) {  // no process can be started
        return statusCannotExecute;
    }
}

}  // namespace

std::string openerProgram(const std::string& /*ownDirectory*/) {
    const std::vector<std::string> command = openerCommand("");
    return command.empty() ? "" : inPath(command.front());
}

Opening openAddress(const std::string& address, const std::string& /*ownDirectory*/) {
    if (!isAddress(address)) {
        return {Result::NotAnAddress};
    }
    const std::vector<std::string> command = openerCommand(address);
    if (command.empty()) {
        return {Result::NoOpener};
    }
    const int status = runOpener(command);
    return {status == 0 ? Result::Opened : Result::Failed, status};
}

bool openDocument(const std::string& path, const std::string& /*ownDirectory*/) {
    // A name that begins with "-" would be taken for an option of the opener.
    const std::vector<std::string> command =
        openerCommand(startsWith(path, "-") ? "./" + path : path);
    if (command.empty()) {
        return false;
    }
    startProgram(command, StandardStreams::NullDevice);
    return true;
}

}  // namespace corvane::platform
