#include "cmdl/options.h"

#include <algorithm>
#include <cstring>

#include "text/strings.h"

namespace corvane::cmdl {

namespace {

// The option as it is typed: "-o, --output <file>".
std::string namesOf(const Option& option) {
    std::string names = option.shortName.empty() ? "" : "-" + option.shortName;
    names = appendString(names, option.longName.empty() ? "" : "--" + option.longName, ", ");
    if (!option.isBool) {
        names = appendString(names, option.valueName.empty() ? "<value>" : option.valueName, " ");
    }
    return names;
}

}  // namespace

CommandLineException::CommandLineException(const std::string& text)
    : Exception("CommandLineException: " + text) {}

CommandLineException::CommandLineException(const std::string& text, int index)
    : Exception(format("CommandLineException: %s [arg %d]", text.c_str(), index)) {}

const std::string& Option::getOpt() const { return shortName.empty() ? longName : shortName; }

const char* Option::getVal(const char* text) {
    const char* const equals = std::strchr(text, '=');
    return equals == nullptr ? nullptr : equals + 1;
}

void Options::addOption(const Option& option) { options_.push_back(option); }

void Options::addOption(const std::string& shortName, const std::string& longName,
                        const std::string& description, bool isBool, bool optional) {
    if (shortName.empty() && longName.empty()) {
        throw CommandLineException("Short and long options cannot be empty at the same time");
    }
    addOption({shortName, longName, description, isBool, "", optional});
}

void Options::addOption(const std::string& shortName, const std::string& description, bool isBool,
                        bool optional) {
    addOption(shortName, "", description, isBool, optional);
}

const Option* Options::matchOption(std::string_view text, bool shortForm) const {
    const std::string_view name = text.substr(0, text.find('='));
    const auto match = std::find_if(options_.begin(), options_.end(), [&](const Option& option) {
        return startsWith(shortForm ? option.shortName : option.longName, name);
    });
    return match == options_.end() ? nullptr : &*match;
}

std::string Options::syntax(const std::string& program) const {
    std::string usage;
    std::string details;
    for (const Option& option : options_) {
        const std::string names = namesOf(option);
        usage += &option == &options_.front() ? "" : " ";
        usage += option.optional ? "[" + names + "]" : names;
        details += "   " + names + " - " + option.description + "\n";
    }
    return (program.empty() ? "" : program + " ") + usage + "\n" + details;
}

std::string appendString(const std::string& a, const std::string& b, const std::string& separator) {
    if (a.empty() || b.empty()) {
        return a + b;
    }
    return a + separator + b;
}

}  // namespace corvane::cmdl
