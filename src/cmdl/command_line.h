// A command line taken apart by declared options: the values of the options and the arguments that
// are none.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "cmdl/options.h"

namespace corvane::cmdl {

class CommandLine {
  public:
    /// The stored value of a flag.
    static const std::string EMPTY;

    /// Replaces the result by that of `argv`, whose first entry is the program's name. An option's
    /// value stands behind '=' or in the next argument. Throws CommandLineException for an unknown
    /// option, a missing value or a missing required option; the result is then partly filled.
    void parse(const Options& options, int argc, const char* const* argv);

    const std::string& getProg() const { return program_; }

    /// `name` is what Option::getOpt() returns.
    bool hasOption(const std::string& name) const;
    std::string getOptionValue(const std::string& name, const std::string& def) const;

    /// The positional arguments; getArg() throws std::out_of_range for an index beyond them.
    std::size_t getArgCount() const { return arguments_.size(); }
    const std::string& getArg(std::size_t index) const { return arguments_.at(index); }

  private:
    void requireOptions(const Options& options) const;

    std::string program_;
    std::map<std::string, std::string> options_;
    std::vector<std::string> arguments_;
};

}  // namespace corvane::cmdl
