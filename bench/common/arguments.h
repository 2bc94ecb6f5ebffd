// Command lines of the benchmark programs: a mode, then pairs of an option and its value, then
// optionally "--" and a command to start.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace corvane::bench {

class Arguments {
  public:
    /// Throws std::invalid_argument when an option has no value or no mode is given.
    Arguments(int argc, char** argv);

    const std::string& mode() const { return mode_; }

    /// The value of --NAME, or `fallback`.
    std::string text(const std::string& name, const std::string& fallback) const;
    int number(const std::string& name, int fallback) const;

    /// What follows "--".
    const std::vector<std::string>& command() const { return command_; }

  private:
    std::string mode_;
    std::map<std::string, std::string> values_;
    std::vector<std::string> command_;
};

/// The whole content of a file; throws std::runtime_error when it cannot be read.
std::string readWholeFile(const std::string& path);

}  // namespace corvane::bench
