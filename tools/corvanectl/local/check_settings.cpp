#include "corvanectl/local/check_settings.h"

#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "app/setting_keys.h"
#include "corvanectl/command_list.h"
#include "corvanectl/local/log_line.h"
#include "corvanectl/suggestion.h"
#include "text/strings.h"

namespace corvane::ctl::checks {
namespace {

const SettingKey* settingNamed(const std::string& name) {
    const auto* const found =
        std::find_if(settingKeys.begin(), settingKeys.end(), [&name](const SettingKey& key) {
            return key.name.size() == name.size() &&
                   ::strncasecmp(key.name.data(), name.data(), name.size()) == 0;
        });
    return found == settingKeys.end() ? nullptr : found;
}

bool isKnown(const std::string& key) {
    return settingNamed(key) != nullptr || ::strncasecmp(key.c_str(), "app.", 4) == 0;
}

std::string at(const Installation& installation, const ConfigurationLine& line) {
    return format("%s:%d: ", installation.configuration.path.c_str(), line.number);
}

std::string nearestKey(const std::string& key) {
    std::array<std::string_view, settingKeys.size()> names;
    std::transform(settingKeys.begin(), settingKeys.end(), names.begin(),
                   [](const SettingKey& each) { return each.name; });
    return std::string(suggest(key, names));
}

Finding unknownKey(const std::string& where, const std::string& key) {
    const std::string meant = nearestKey(key);
    return wrong(concatenate(where, "the server knows no key '", key, "'"),
                 meant.empty() ? "see corvane.conf(5) for the keys"
                               : concatenate("did you mean ", meant, "?"));
}

bool isNumber(const std::string& value) {
    const std::size_t sign = startsWith(value, "-") ? 1 : 0;
    return value.size() > sign && value.find_first_not_of("0123456789", sign) == std::string::npos;
}

Findings checkNumber(const std::string& what, const SettingKey& key, const std::string& value) {
    constexpr long none = -1'000'000'000'000;
    const bool isFlag = value == "true" || value == "false";
    const long number = value == "true" ? 1 : value == "false" ? 0 : toLong(value, none);
    if (number == none) {
        return {
            wrong(what + " is no number and counts as not set", "give a number, without blanks")};
    }
    if (key.kind == SettingKind::Number && (number < key.lowest || number > key.highest)) {
        return {wrong(what + " is refused, the server does not start",
                      format("give a number from %ld to %ld", key.lowest, key.highest))};
    }
    if (!isNumber(value) && !isFlag) {
        return {wrong(format("%s counts as %ld", what.c_str(), number),
                      "write the whole number, without units or a comment")};
    }
    return {};
}

Findings checkFlag(const std::string& what, const std::string& value) {
    if (value == "true" || value == "false" || value == "0" || value == "1") {
        return {};
    }
    const bool hasNumber = toLong(value, 0) == toLong(value, 1);
    return {wrong(
        what + (hasNumber ? " counts as the number that it begins with" : " counts as not set"),
        "write true or false in small letters")};
}

// Of the server's only: COMMANDS has no effect on those of corvanectl itself.
std::string_view nearestCommand(const std::string& name) {
    std::vector<std::string_view> names;
    for (const CommandUsage& command : commandList()) {
        names.push_back(command.name);
    }
    return suggest(name, names);
}

Findings checkCommands(const std::string& what, const std::string& value) {
    Findings findings;
    for (const std::string& piece : strExplode(value, ",")) {
        const std::string name = trim(piece);
        if (name.find_first_not_of(whitespace) == std::string::npos || findCommand(name)) {
            continue;
        }
        const std::string_view meant = nearestCommand(name);
        findings.push_back(
            wrong(concatenate(what, ": there is no command '", name, "'"),
                  meant.empty() ? "take it out" : concatenate("did you mean ", meant, "?")));
    }
    return findings;
}

Findings checkValue(const std::string& where, const SettingKey& key, const std::string& value) {
    const std::string what = concatenate(where, key.name, "=", value);
    switch (key.kind) {
        case SettingKind::Number:
        case SettingKind::Limit:
            return checkNumber(what, key, value);
        case SettingKind::Flag:
            return checkFlag(what, value);
        case SettingKind::Commands:
            return checkCommands(what, value);
        case SettingKind::Priority: {
            const bool isLevel =
                levelNamed(value) != Level::Unknown &&
                value.find_first_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
            return isLevel || isNumber(value) || value == "NOTSET"
                       ? Findings{}
                       : Findings{
                             wrong(what + " is refused, the server does not start",
                                   "use DEBUG, INFO, NOTICE, WARN, ERROR, CRIT, ALERT or FATAL")};
        }
        default:
            return {};
    }
}

Findings checkDirectory(const std::string& key, const std::string& path, const std::string& mend) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        return {};
    }
    return {wrong(concatenate(key, ": '", path, "': ", std::strerror(errno)), mend)};
}

}  // namespace

Findings configurationFile(const Installation& installation) {
    const std::string& path = installation.configuration.path;
    if (installation.directory.empty()) {
        return {wrong("no server is installed beside corvanectl, in ../lib/corvane, or running",
                      "install it; without it the rest is looked at with the defaults")};
    }
    if (path.empty()) {
        return {fine("none in " + installation.directory + ", the defaults hold")};
    }
    if (!installation.obstacle.empty()) {
        return {wrong(concatenate(path, " cannot be read: ", installation.obstacle),
                      "the server needs the right to read it; 'namei -l' shows who has it")};
    }
    if (installation.configuration.tooLong != 0) {
        return {wrong(format("%s:%d is longer than 1023 characters, the server reads no further",
                             path.c_str(), installation.configuration.tooLong),
                      "shorten it")};
    }
    return {fine(path)};
}

Findings keys(const Installation& installation) {
    Findings findings;
    for (const ConfigurationLine& line : installation.configuration.lines) {
        const std::string where = at(installation, line);
        const std::string key = trim(line.key);
        if (!line.hasEquals) {
            findings.push_back(wrong(concatenate(where, "'", line.key, "' has no '='"),
                                     "write KEY=VALUE, or # in front of a comment"));
        } else if (key != line.key) {
            findings.push_back(wrong(concatenate(where, "a blank before '=' is part of the key '",
                                                 line.key, "', which the server does not know"),
                                     concatenate("write ", key, "=", trim(line.value))));
        } else if (!isKnown(key)) {
            findings.push_back(unknownKey(where, key));
        } else if (startsWith(line.value, " ") || startsWith(line.value, "\t")) {
            findings.push_back(wrong(concatenate(where, "a blank behind '=' is part of the value"),
                                     concatenate("write ", key, "=", trim(line.value))));
        }
    }
    return findings;
}

Findings values(const Installation& installation) {
    Findings findings;
    for (const ConfigurationLine& line : installation.configuration.lines) {
        const SettingKey* const key = line.hasEquals ? settingNamed(line.key) : nullptr;
        if (key != nullptr && !line.value.empty()) {
            for (Finding& each : checkValue(at(installation, line), *key, line.value)) {
                findings.push_back(std::move(each));
            }
        }
    }
    return findings;
}

Findings folders(const Installation& installation) {
    Findings findings;
    const std::string folders = installation.configuration.valueOf("FOLDERS").value_or("");
    for (const std::string& entry :
         folders.empty() ? std::vector<std::string>{} : strExplode(folders, ":")) {
        const std::string path = entry.substr(startsWith(entry, "ro=")  ? 3
                                              : startsWith(entry, "x=") ? 2
                                                                        : 0);
        const Findings found =
            startsWith(path, "/")
                ? checkDirectory("FOLDERS", path,
                                 "make it, or take it out; the server does not start")
                : Findings{wrong(concatenate("FOLDERS: '", entry, "' is no full path"),
                                 "write /PATH, ro=/PATH or x=/PATH; the server does not start")};
        findings.insert(findings.end(), found.begin(), found.end());
    }
    const std::string directory = installation.configuration.valueOf("CURRDIR").value_or("");
    if (!directory.empty()) {
        const Findings found =
            checkDirectory("CURRDIR", directory, "make it; the server stays elsewhere");
        findings.insert(findings.end(), found.begin(), found.end());
    }
    return findings;
}

}  // namespace corvane::ctl::checks
