#include "corvanectl/local/help.h"

#include <iostream>

#include "corvanectl/command_help.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/local_command.h"
#include "corvanectl/suggestion.h"

namespace corvane::ctl::local {

int help(const Invocation& invocation) {
    if (invocation.parameters.empty()) {
        std::cout << helpText();
        return succeeded;
    }
    const std::string& name = invocation.parameters.front();
    const LocalCommand* const local = findLocalCommand(name, 0);
    const CommandUsage* const command = findCommand(name);
    if (local == nullptr && command == nullptr) {
        throw unknownCommand(name);
    }
    if (local != nullptr) {
        std::cout << helpPage(local->usage, local->help);
    }
    if (command != nullptr) {
        std::cout << (local == nullptr ? "" : "\n") << helpPage(*command, *findHelp(name));
    }
    return succeeded;
}

}  // namespace corvane::ctl::local
