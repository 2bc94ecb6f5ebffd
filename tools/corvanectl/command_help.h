// What "corvanectl help COMMAND" says about a command: a sentence, what each parameter is for, and
// an example. The texts of the server's commands are here, those of local ones in their table.
#pragma once

#include <string>
#include <string_view>

#include "corvanectl/command_list.h"

namespace corvane::ctl {

struct CommandHelp {
    std::string_view sentence;
    /// One line for each parameter and option: "name: meaning".
    std::string_view parameters;
    /// As it is typed.
    std::string_view example;
    /// What one should know before; empty for most commands.
    std::string_view note{};
};

/// The text for a command of the server; null when there is none.
const CommandHelp* findHelp(std::string_view command);

/// The page about a command, with a line end.
std::string helpPage(const CommandUsage& command, const CommandHelp& help);

}  // namespace corvane::ctl
