#include "corvanectl/command_list.h"

#include <algorithm>
#include <array>
#include <vector>

#include "commands/command_syntax.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view dataParameter = "data";

constexpr auto commands = [] {
    std::array<CommandUsage, commandSyntax.size() + 1> list{};
    std::transform(commandSyntax.begin(), commandSyntax.end(), list.begin(),
                   [](const CommandSyntax& syntax) {
                       return CommandUsage{syntax.name, syntax.parameters};
                   });
    list.back() = {"shutdown", ""};
    return list;
}();

std::vector<std::string> namesOf(std::string_view parameters) {
    return parameters.empty() ? std::vector<std::string>{} : strExplode(parameters, " ");
}

}  // namespace

bool CommandUsage::takesData() const {
    const std::vector<std::string> names = namesOf(parameters);
    return !names.empty() && names.back() == dataParameter;
}

std::size_t CommandUsage::fewest() const {
    const std::vector<std::string> names = namesOf(parameters);
    const auto required = std::count_if(names.begin(), names.end(), [](const std::string& each) {
        return each.front() != '[' && each != dataParameter;
    });
    return static_cast<std::size_t>(required);
}

std::size_t CommandUsage::most() const {
    return namesOf(parameters).size() - (takesData() ? 1 : 0);
}

std::string usageLine(const CommandUsage& command) {
    std::string line(command.name);
    for (const std::string& parameter : namesOf(command.parameters)) {
        line += (parameter == dataParameter ? " < " : " ") + parameter;
    }
    return line;
}

std::span<const CommandUsage> commandList() { return commands; }

const CommandUsage* findCommand(std::string_view name) {
    const auto* const found =
        std::find_if(commands.begin(), commands.end(),
                     [name](const CommandUsage& command) { return command.name == name; });
    return found == commands.end() ? nullptr : found;
}

}  // namespace corvane::ctl
