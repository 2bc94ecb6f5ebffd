#include "cmdl/command_line.h"

#include "text/strings.h"

namespace corvane::cmdl {

namespace {

const Option& matchArgument(const Options& options, const char* argument, int index) {
    const bool isLong = argument[1] == '-';
    const Option* const option = options.matchOption(argument + (isLong ? 2 : 1), !isLong);
    if (option == nullptr) {
        throw CommandLineException(format("Unrecognized option '%s' ", argument), index);
    }
    return *option;
}

// `next` is the argument behind the option, null when the option is the last one.
const char* valueInNext(const char* argument, const char* next, int index) {
    if (next == nullptr) {
        throw CommandLineException(format("no value for non bool option '%s'", argument), index);
    }
    if (next[0] == '-') {
        throw CommandLineException(
            format("value '%s' for option '%s' is option too", next, argument), index);
    }
    return next;
}

}  // namespace

const std::string CommandLine::EMPTY;

void CommandLine::parse(const Options& options, int argc, const char* const* argv) {
    arguments_.clear();
    options_.clear();
    program_ = argc > 0 ? argv[0] : "";
    for (int i = 1; i < argc; ++i) {
        const char* const argument = argv[i];
        if (argument[0] != '-') {
            arguments_.emplace_back(argument);
            continue;
        }
        const Option& option = matchArgument(options, argument, i);
        const std::string& key = option.getOpt();
        if (option.isBool) {
            options_[key] = EMPTY;
        } else if (const char* const value = Option::getVal(argument)) {
            options_[key] = value;
        } else {
            options_[key] = valueInNext(argument, i + 1 < argc ? argv[i + 1] : nullptr, i);
            ++i;
        }
    }
    requireOptions(options);
}

bool CommandLine::hasOption(const std::string& name) const { return options_.contains(name); }

std::string CommandLine::getOptionValue(const std::string& name, const std::string& def) const {
    const auto option = options_.find(name);
    return option == options_.end() ? def : option->second;
}

void CommandLine::requireOptions(const Options& options) const {
    for (const Option& option : options.declared()) {
        if (!option.optional && !hasOption(option.getOpt())) {
            throw CommandLineException(
                format("lack of required option '%s' ", option.getOpt().c_str()));
        }
    }
}

}  // namespace corvane::cmdl
