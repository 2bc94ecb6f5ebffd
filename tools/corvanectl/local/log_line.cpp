#include "corvanectl/local/log_line.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>

#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::array<std::string_view, 9> names{"EMERG", "FATAL",  "ALERT", "CRIT", "ERROR",
                                                "WARN",  "NOTICE", "INFO",  "DEBUG"};

bool isLetter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

bool isEqual(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// "2026-11-22 16:00:00,123 " of the default layout.
bool beginsWithDate(std::string_view line) {
    constexpr std::string_view shape = "0000-00-00 00:00:00,000 ";
    return line.size() >= shape.size() &&
           std::equal(shape.begin(), shape.end(), line.begin(), [](char wanted, char c) {
               return wanted == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0
                                    : wanted == c;
           });
}

// The first word that is a level's name.
Level levelIn(std::string_view line) {
    for (auto at = line.begin(); at != line.end();) {
        const auto begin = std::find_if(at, line.end(), isLetter);
        at = std::find_if_not(begin, line.end(), isLetter);
        const auto name = std::find(names.begin(), names.end(), std::string_view(begin, at));
        if (name != names.end()) {
            return static_cast<Level>(name - names.begin());
        }
    }
    return Level::Unknown;
}

bool isPartOfAddress(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '.';
}

}  // namespace

std::string_view takeLine(std::string_view& lines) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    const std::string_view line = lines.substr(0, end);
    lines.remove_prefix(std::min(end + 1, lines.size()));
    return line;
}

Level levelNamed(std::string_view name) {
    const auto* const found = std::find_if(
        names.begin(), names.end(), [name](std::string_view each) { return isEqual(each, name); });
    return static_cast<Level>(found - names.begin());
}

LogLine parseLogLine(std::string_view line) {
    constexpr std::size_t dateSize = 24;
    if (beginsWithDate(line) && line.substr(dateSize, 1) == "[") {
        const std::string_view rest = line.substr(dateSize + 1);
        const std::size_t comma = rest.find(',');
        const std::size_t end = rest.find("] ");
        if (comma < end && end != std::string_view::npos) {
            return {levelNamed(rest.substr(0, comma)), rest.substr(comma + 1, end - comma - 1),
                    rest.substr(end + 2)};
        }
    }
    return {levelIn(line), {}, line};
}

bool namesClient(std::string_view line, std::string_view address) {
    for (std::size_t at = line.find(address); at != std::string_view::npos;
         at = line.find(address, at + 1)) {
        const std::size_t end = at + address.size();
        if ((at == 0 || !isPartOfAddress(line[at - 1])) &&
            (end == line.size() || !isPartOfAddress(line[end]))) {
            return true;
        }
    }
    return false;
}

bool namesCommand(const LogLine& line, const std::string& command) {
    return endsWith(line.category, ".cmd." + command) ||
           line.message.find("cmd '" + command + "'") != std::string_view::npos ||
           line.message.find("command '" + command + "'") != std::string_view::npos;
}

}  // namespace corvane::ctl
