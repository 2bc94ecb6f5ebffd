#include "corvanectl/invocation.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "cmdl/command_line.h"
#include "corvanectl/command_list.h"
#include "corvanectl/local/log_view.h"
#include "corvanectl/local_command.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr int largestPort = 65535;
constexpr int longestTimeout = 1'000'000;

cmdl::Options declaredOptions() {
    const Endpoint defaults;
    cmdl::Options options;
    options.addOption({"h", "help", "print this help", true, "", true});
    options.addOption({"H", "host", "the server's address, " + defaults.host + " by default", false,
                       "ADDRESS", true});
    options.addOption(
        {"p", "port", format("its port, %d by default", defaults.port), false, "PORT", true});
    options.addOption(
        {"t", "timeout",
         format("seconds to wait for the reply, %d by default, 0 for ever", defaults.timeout),
         false, "SECONDS", true});
    options.addOption({"x", "xml", "print the reply as it came", true, "", true});
    options.addOption({"j", "json", "print the reply as a JSON object", true, "", true});
    options.addOption({"l", "long", "list directories with kind, size and date", true, "", true});
    options.addOption({"", "log", "the server's log, looked for by default", false, "FILE", true});
    options.addOption({"v", "version", "print the version", true, "", true});
    return options;
}

constexpr std::string_view endOfOptions = "--";

bool isOption(std::string_view argument) {
    return startsWith(argument, "-") && argument.size() > 1 && argument != endOfOptions;
}

// The index of the first argument that is neither an option nor an option's value.
int findOptionsEnd(const cmdl::Options& options, int argc, const char* const* argv) {
    int index = 1;
    while (index < argc && isOption(argv[index])) {
        const std::string_view argument = argv[index];
        const bool isShort = !startsWith(argument, "--");
        const cmdl::Option* option = options.matchOption(argument.substr(isShort ? 1 : 2), isShort);
        const bool valueFollows =
            option != nullptr && !option->isBool && argument.find('=') == std::string_view::npos;
        index += valueFollows && index + 1 < argc ? 2 : 1;
    }
    return index;
}

int numberOption(const cmdl::CommandLine& line, const std::string& name, const char* what,
                 int lowest, int highest, int def) {
    if (!line.hasOption(name)) {
        return def;
    }
    const std::string text = line.getOptionValue(name, "");
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < lowest ||
        number > highest) {
        throw Exception(format("'%s' is no %s from %d to %d", text.c_str(), what, lowest, highest));
    }
    return number;
}

// Takes the few options that may stand behind their command.
void takeCommandOptions(Invocation& invocation) {
    std::vector<std::string>& parameters = invocation.parameters;
    if (parameters == std::vector<std::string>{"--help"}) {
        parameters.front() = invocation.command;
        invocation.command = "help";
        return;
    }
    if (invocation.command == "status" && parameters == std::vector<std::string>{"--json"}) {
        invocation.json = true;
        parameters.clear();
        return;
    }
    if (invocation.command == "log" && LogView::parse(parameters)) {
        invocation.options = std::exchange(parameters, {});
        return;
    }
    const bool copies = invocation.command == "copy" || invocation.command == "rename";
    const std::string_view first = parameters.empty() ? "" : std::string_view(parameters.front());
    const bool isLong = invocation.command == "listDir" && parameters.size() == 2 && first == "-l";
    invocation.replace = copies && first == "--replace";
    invocation.longListing = invocation.longListing || isLong;
    if (invocation.replace || isLong) {
        parameters.erase(parameters.begin());
    }
}

}  // namespace

Invocation parseInvocation(int argc, const char* const* argv, const Invocation& defaults,
                           bool atTerminal) {
    Invocation result = defaults;
    result.mode = Invocation::Mode::Request;
    if (argc >= 2 && std::string_view(argv[1]) == "--complete") {
        result.mode = Invocation::Mode::Complete;
        result.parameters.assign(argv + 2, argv + argc);
        return result;
    }
    const cmdl::Options options = declaredOptions();
    const int optionsEnd = findOptionsEnd(options, argc, argv);
    const bool isMarked = optionsEnd < argc && argv[optionsEnd] == endOfOptions;
    const int commandIndex = optionsEnd + (isMarked ? 1 : 0);
    cmdl::CommandLine line;
    line.parse(options, optionsEnd, argv);
    if (line.hasOption("h") || line.hasOption("v")) {
        result.mode = line.hasOption("h") ? Invocation::Mode::Help : Invocation::Mode::Version;
        return result;
    }
    Endpoint& to = result.endpoint;
    to.host = line.getOptionValue("H", to.host);
    to.port = numberOption(line, "p", "port", 1, largestPort, to.port);
    to.timeout = numberOption(line, "t", "number of seconds", 0, longestTimeout, to.timeout);
    result.log = line.getOptionValue("log", result.log);
    result.xml = result.xml || line.hasOption("x");
    result.json = result.json || line.hasOption("j");
    result.longListing = result.longListing || line.hasOption("l");
    if (commandIndex == argc) {
        if (!atTerminal) {
            throw Exception("no command given, try --help");
        }
        result.mode = Invocation::Mode::Prompt;
        return result;
    }
    result.command = argv[commandIndex];
    result.parameters.assign(argv + commandIndex + 1, argv + argc);
    takeCommandOptions(result);
    return result;
}

std::string helpText() {
    const std::string options = declaredOptions().syntax("");
    std::string text =
        "Usage: corvanectl [OPTION...] COMMAND [PARAMETER...]\n\n"
        "Sends one command to a running Corvane server and prints its reply.\n\n"
        "Options, which stand before the command:\n";
    text += options.substr(options.find('\n') + 1);
    text += "\nCommands of the server:\n";
    for (const CommandUsage& command : commandList()) {
        text += "   " + usageLine(command) + '\n';
    }
    text += "\nCommands of corvanectl itself:\n";
    for (const LocalCommand& command : localCommands()) {
        text += "   " + usageLine(command.usage) + '\n';
    }
    return text +
           "\n'corvanectl help COMMAND' explains one.\n"
           "\nExit status: 0 success, 1 the server answers FAILED, 2 no answer.\n";
}

std::string completionWords() {
    std::string words;
    for (const CommandUsage& command : commandList()) {
        words += command.name;
        words += '\n';
    }
    for (const LocalCommand& command : localCommands()) {
        words += command.usage.name;
        words += '\n';
    }
    return words;
}

std::vector<std::string> optionNames() {
    const cmdl::Options options = declaredOptions();
    std::vector<std::string> names;
    for (const cmdl::Option& option : options.declared()) {
        names.push_back("--" + option.longName);
    }
    return names;
}

}  // namespace corvane::ctl
