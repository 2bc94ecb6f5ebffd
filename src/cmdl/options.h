// The options that a program declares for its command line: their names, whether they take a
// value, how an argument is matched with them, and the help text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "text/exception.h"

namespace corvane::cmdl {

/// A declaration that makes no sense, or arguments that do not fit the declared options.
class CommandLineException : public Exception {
  public:
    explicit CommandLineException(const std::string& text);

    /// `index` is the place of the offending argument, the program's name being argument 0.
    CommandLineException(const std::string& text, int index);
};

struct Option {
    std::string shortName;  // after a single '-'; may be empty
    std::string longName;   // after "--"; may be empty
    std::string description;
    bool isBool = false;    // a flag, which takes no value
    std::string valueName;  // name of the value in the help text; empty for "<value>"
    bool optional = true;

    /// The name that a parse result files the option under: the short one, or the long one when
    /// there is no short one.
    const std::string& getOpt() const;

    /// The text behind the first '=', or null when there is none.
    static const char* getVal(const char* text);
};

class Options {
  public:
    void addOption(const Option& option);

    /// Throws CommandLineException when both names are empty.
    void addOption(const std::string& shortName, const std::string& longName,
                   const std::string& description, bool isBool, bool optional);
    void addOption(const std::string& shortName, const std::string& description, bool isBool,
                   bool optional);

    /// The first declared option whose short or long name begins with what stands before the first
    /// '=' of `text`, so names may be abbreviated; null when there is none. The result is valid
    /// until the next addOption().
    const Option* matchOption(std::string_view text, bool shortForm) const;

    /// The help text: a usage line, begun with `program` unless that is empty, and one line for
    /// each option.
    std::string syntax(const std::string& program) const;

    const std::vector<Option>& declared() const { return options_; }

  private:
    std::vector<Option> options_;  // in the order of declaration
};

/// `a` + `separator` + `b`, without the separator when one of them is empty.
std::string appendString(const std::string& a, const std::string& b, const std::string& separator);

}  // namespace corvane::cmdl
