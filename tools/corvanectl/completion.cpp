#include "corvanectl/completion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string_view>

#include "corvanectl/command_list.h"
#include "corvanectl/invocation.h"
#include "corvanectl/local_command.h"
#include "corvanectl/path_completion.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

using Words = std::vector<std::string>;

constexpr int patience = 1;  // seconds

struct Values {
    std::string_view parameter;
    std::string_view values;
};

constexpr auto valuesOfParameters = std::to_array<Values>({
    {"which", "desktop"},
    {"recursive", "true false"},
    {"priority", "DEBUG INFO NOTICE WARN ERROR CRIT ALERT FATAL"},
    {"flags", "1 2 3"},
    {"root",
     "HKEY_CLASSES_ROOT HKEY_CURRENT_USER HKEY_LOCAL_MACHINE HKEY_USERS HKEY_CURRENT_CONFIG"},
});

constexpr auto serverPaths = std::to_array<std::string_view>(
    {"file", "directory", "source", "destination", "target", "remote"});

Words startingWith(const std::string& begin, const Words& words) {
    Words found;
    std::copy_if(words.begin(), words.end(), std::back_inserter(found),
                 [&begin](const std::string& word) { return startsWith(word, begin); });
    return found;
}

void takePort(const std::string& text, Endpoint& endpoint) {
    std::from_chars(text.data(), text.data() + text.size(), endpoint.port);
}

// Takes the options in front of the command; false when the last word is one or its value.
bool takeOptions(Words& words, Endpoint& endpoint) {
    while (words.size() > 1 && startsWith(words.front(), "-")) {
        const std::string name = words.front().substr(0, words.front().find('='));
        const bool isHost = name == "-H" || name == "--host";
        const bool isPort = name == "-p" || name == "--port";
        const bool hasValue = isHost || isPort || name == "-t" || name == "--timeout";
        const bool isInside = words.front().size() > name.size();
        if (hasValue && !isInside && words.size() == 2) {
            return false;
        }
        const std::string value = isInside ? words.front().substr(name.size() + 1) : words[1];
        if (isHost) {
            endpoint.host = value;
        } else if (isPort) {
            takePort(value, endpoint);
        }
        words.erase(words.begin(), words.begin() + (hasValue && !isInside ? 2 : 1));
    }
    return true;
}

// "[--replace]" and the like are options of a command.
Words optionsOf(const std::string& command) {
    if (command == "copy" || command == "rename") {
        return {"--replace"};
    }
    if (command == "listDir") {
        return {"-l"};
    }
    Words options;
    if (const LocalCommand* const local = findLocalCommand(command, 0)) {
        for (const std::string& name : strExplode(local->usage.parameters, " ")) {
            if (startsWith(name, "[-")) {
                options.push_back(trim(name, "[]"));
            }
        }
    }
    return options;
}

std::string nameAt(const CommandUsage& usage, std::size_t place) {
    Words names = strExplode(usage.parameters, " ");
    std::erase_if(names, [](const std::string& name) { return startsWith(name, "[-"); });
    return place < names.size() ? trim(names[place], "[]") : "";
}

// The name of the parameter that a command has in this place, options aside; empty for none.
std::string parameterName(const std::string& command, std::size_t place) {
    const LocalCommand* const local = findLocalCommand(command, 0);
    const CommandUsage* const servers = findCommand(command);
    const std::string name = local == nullptr ? "" : nameAt(local->usage, place);
    return name.empty() && servers != nullptr ? nameAt(*servers, place) : name;
}

bool isServerPath(const std::string& command, const std::string& parameter) {
    return std::find(serverPaths.begin(), serverPaths.end(), parameter) != serverPaths.end() ||
           (parameter == "path" && command == "delete");
}

Words commandWords(const std::string& begin) {
    Words words = startingWith(begin, strExplode(completionWords(), "\n"));
    std::erase(words, "");
    return words;
}

Words parameterWords(const std::string& command, const std::string& parameter,
                     const std::string& begin, const Endpoint& endpoint) {
    if (parameter == "command") {
        return commandWords(begin);
    }
    if (parameter == "local") {
        return localPaths(begin);
    }
    if (isServerPath(command, parameter)) {
        return serverPathsLike(begin, parameter == "directory" ? Wanted::Directories : Wanted::All,
                               endpoint);
    }
    for (const Values& each : valuesOfParameters) {
        if (each.parameter == parameter) {
            return startingWith(begin, strExplode(each.values, " "));
        }
    }
    return {};
}

}  // namespace

std::vector<std::string> completions(std::vector<std::string> words, Endpoint endpoint) {
    endpoint.timeout = patience;
    if (words.empty() || !takeOptions(words, endpoint)) {
        return {};
    }
    const std::string last = words.back();
    if (words.size() == 1) {
        return startsWith(last, "-") ? startingWith(last, optionNames()) : commandWords(last);
    }
    const std::string& command = words.front();
    const Words options = optionsOf(command);
    std::size_t first = 1;
    while (first + 1 < words.size() &&
           std::find(options.begin(), options.end(), words[first]) != options.end()) {
        ++first;
    }
    const std::size_t place = words.size() - 1 - first;
    Words found = parameterWords(command, parameterName(command, place), last, endpoint);
    if (place == 0 && startsWith(last, "-")) {
        const Words more = startingWith(last, options);
        found.insert(found.end(), more.begin(), more.end());
    }
    return found;
}

}  // namespace corvane::ctl
