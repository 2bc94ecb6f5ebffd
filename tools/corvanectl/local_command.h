// The commands that corvanectl carries out itself, beside those that it sends to the server: one
// row each, with what help and completion need to know.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "corvanectl/command_help.h"
#include "corvanectl/command_list.h"
#include "corvanectl/invocation.h"

namespace corvane::ctl {

struct LocalCommand {
    CommandUsage usage;
    CommandHelp help;
    /// Writes to std::cout and returns the exit status. Throws Exception when it cannot be carried
    /// out, which is status 2.
    int (*run)(const Invocation& invocation);
};

std::span<const LocalCommand> localCommands();

/// Null when there is no such command. A name that the server has as well is local with as many
/// parameters as the local command takes, and the server's with more.
const LocalCommand* findLocalCommand(std::string_view name, std::size_t parameterCount);

}  // namespace corvane::ctl
