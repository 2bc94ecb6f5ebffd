#include "corvanectl/local_command.h"

#include <algorithm>
#include <array>

#include "corvanectl/local/help.h"

namespace corvane::ctl {
namespace {

constexpr auto table = std::to_array<LocalCommand>({
    {{"help", "[command]"},
     {"Explains a command, or lists all of them.", "command: its name", "corvanectl help listDir"},
     local::help},
});

}  // namespace

std::span<const LocalCommand> localCommands() { return table; }

const LocalCommand* findLocalCommand(std::string_view name, std::size_t parameterCount) {
    const auto* const found =
        std::find_if(table.begin(), table.end(),
                     [name](const LocalCommand& command) { return command.usage.name == name; });
    if (found == table.end()) {
        return nullptr;
    }
    const bool isServers = parameterCount > found->usage.most() && findCommand(name) != nullptr;
    return isServers ? nullptr : found;
}

}  // namespace corvane::ctl
