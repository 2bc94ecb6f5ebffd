// The command-line parser with options and arguments from the input: lines up to the first empty
// one declare options, the others are the arguments.
#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "cmdl/command_line.h"
#include "fuzz/fuzz_target.h"

namespace {

using namespace corvane;

// A line's first character holds the flags, the rest is "short,long".
void declare(cmdl::Options& options, const std::string& line) {
    fuzz::Input input(line);
    const unsigned flags = input.byte();
    const std::string shortName(input.field(','));
    const std::string longName(input.rest());
    try {
        options.addOption(shortName, longName, "text", flags % 2 != 0, flags / 2 % 2 != 0);
    } catch (const cmdl::CommandLineException&) {
        fuzz::require(shortName.empty() && longName.empty(), "an option has a name");
    }
}

bool isOneOf(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

// A value is an argument of its own, or the end of one behind its "=".
bool isValueOf(const std::vector<std::string>& arguments, const std::string& value) {
    return std::any_of(arguments.begin(), arguments.end(), [&](const std::string& argument) {
        return argument == value || argument.ends_with("=" + value);
    });
}

const cmdl::Option* optionOf(const cmdl::Options& options, const std::string& argument) {
    const bool isLong = argument.starts_with("--");
    const std::string name = argument.substr(isLong ? 2 : 1, argument.find('=') - (isLong ? 2 : 1));
    for (const cmdl::Option& option : options.declared()) {
        if ((isLong ? option.longName : option.shortName).starts_with(name)) {
            return &option;
        }
    }
    return nullptr;
}

// Whether the arguments fit the options.
bool fits(const cmdl::Options& options, const std::vector<std::string>& arguments) {
    std::set<std::string> found;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (!arguments[i].starts_with('-')) {
            continue;
        }
        const cmdl::Option* const option = optionOf(options, arguments[i]);
        if (option == nullptr) {
            return false;
        }
        found.insert(option->getOpt());
        if (!option->isBool && arguments[i].find('=') == std::string::npos) {
            ++i;
            if (i == arguments.size() || arguments[i].starts_with('-')) {
                return false;
            }
        }
    }
    return std::all_of(options.declared().begin(), options.declared().end(),
                       [&](const cmdl::Option& option) {
                           return option.optional || found.contains(option.getOpt());
                       });
}

void check(const cmdl::CommandLine& line, const cmdl::Options& options,
           const std::vector<std::string>& arguments) {
    std::size_t positional = 0;
    for (std::size_t i = 0; i < line.getArgCount(); ++i) {
        fuzz::require(isOneOf(arguments, line.getArg(i)) && line.getArg(i)[0] != '-',
                      "a positional argument comes from the command line");
        ++positional;
    }
    fuzz::require(positional <= arguments.size(), "no argument counts twice");
    for (const cmdl::Option& option : options.declared()) {
        fuzz::require(option.optional || line.hasOption(option.getOpt()),
                      "a required option is there");
        const std::string value = line.getOptionValue(option.getOpt(), "");
        fuzz::require(value.empty() || isValueOf(arguments, value),
                      "a value comes from the command line");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(fuzz::asText(data, size));
    std::erase(text, '\0');
    std::vector<std::string> lines = fuzz::split(text, '\n');
    const auto divider = std::find(lines.begin(), lines.end(), "");
    cmdl::Options options;
    std::for_each(lines.begin(), divider, [&](const std::string& l) { declare(options, l); });
    lines.erase(lines.begin(), divider == lines.end() ? divider : divider + 1);

    std::vector<const char*> argv{"program"};
    for (const std::string& argument : lines) {
        argv.push_back(argument.c_str());
    }
    cmdl::CommandLine line;
    try {
        line.parse(options, static_cast<int>(argv.size()), argv.data());
        fuzz::require(fits(options, lines), "what does not fit is refused");
        check(line, options, lines);
    } catch (const cmdl::CommandLineException& e) {
        fuzz::require(!fits(options, lines), "what fits is not refused");
        fuzz::require(std::strlen(e.what()) > 0, "a refusal says why");
    }
    fuzz::require(!options.syntax("program").empty(), "there is a help text");
    return 0;
}
