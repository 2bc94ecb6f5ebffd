#include "corvanectl/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "corvanectl/command_list.h"
#include "corvanectl/local_command.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// How many letters must be put in, left out or changed, by the algorithm of Wagner and Fischer.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row[b.size()];
}

}  // namespace

std::string_view suggest(std::string_view name, std::span<const std::string_view> candidates) {
    std::string_view best;
    std::size_t fewest = std::max<std::size_t>(1, name.size() / 3) + 1;
    for (const std::string_view candidate : candidates) {
        const std::size_t distance = editDistance(name, candidate);
        if (distance < fewest && distance < candidate.size()) {
            fewest = distance;
            best = candidate;
        }
    }
    return best;
}

std::string_view suggestCommand(std::string_view name) {
    std::vector<std::string_view> names;
    for (const CommandUsage& command : commandList()) {
        names.push_back(command.name);
    }
    for (const LocalCommand& command : localCommands()) {
        names.push_back(command.usage.name);
    }
    return suggest(name, names);
}

Exception unknownCommand(std::string_view name) {
    const std::string_view meant = suggestCommand(name);
    return Exception(meant.empty()
                         ? concatenate("unknown command '", name, "', try --help")
                         : concatenate("unknown command '", name, "', did you mean ", meant, "?"));
}

}  // namespace corvane::ctl
