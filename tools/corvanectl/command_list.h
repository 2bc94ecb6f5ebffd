// The commands that can be sent, with the names of their parameters: those of the server's table,
// and "shutdown", which the server handles outside of it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace corvane::ctl {

struct CommandUsage {
    std::string_view name;
    /// In order, separated by blanks; those in brackets may be left out. One that is called "data"
    /// comes from standard input.
    std::string_view parameters;

    bool takesData() const;
    /// How many parameters the command line must and may give.
    std::size_t fewest() const;
    std::size_t most() const;
};

/// The command as it is written on the command line: "write file < data".
std::string usageLine(const CommandUsage& command);

std::span<const CommandUsage> commandList();

/// Null when there is no such command. Upper and lower case differ.
const CommandUsage* findCommand(std::string_view name);

}  // namespace corvane::ctl
