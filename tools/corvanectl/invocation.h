// What a command line asks for.
#pragma once

#include <string>
#include <vector>

#include "corvanectl/exchange.h"

namespace corvane::ctl {

struct Invocation {
    enum class Mode { Request, Help, Version, Complete, Prompt };

    Mode mode = Mode::Request;
    Endpoint endpoint;
    /// Print the reply as it came.
    bool xml = false;
    /// Print it as a JSON object.
    bool json = false;
    /// List directories with kind, size and date.
    bool longListing = false;
    /// Of "copy" and "rename": put the file in the place of an existing one.
    bool replace = false;
    /// The server's log; empty to look where the server writes it.
    std::string log;
    /// What stood behind a command of corvanectl's own and is no parameter.
    std::vector<std::string> options;
    std::string command;
    /// For Mode::Complete: the words of the command line so far, if any.
    std::vector<std::string> parameters;
};

/// Options stand before the command; everything behind it is a parameter, whatever it begins with,
/// with three exceptions: "--help" as the only parameter, "-l" in front of the directory of
/// "listDir", and "--replace" as the first parameter of "copy" and "rename". Throws Exception for
/// what makes no sense, and for a command line without a command unless there is somebody to ask,
/// at a terminal. What no option says is taken from `defaults`.
Invocation parseInvocation(int argc, const char* const* argv, const Invocation& defaults = {},
                           bool atTerminal = false);

std::string helpText();

/// The names of the commands, one on each line, for the completion of shells.
std::string completionWords();

/// The long options, each with "--" in front.
std::vector<std::string> optionNames();

}  // namespace corvane::ctl
