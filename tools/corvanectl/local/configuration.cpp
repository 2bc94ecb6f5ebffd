#include "corvanectl/local/configuration.h"

#include <strings.h>

#include <algorithm>
#include <climits>
#include <cstddef>

#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::size_t longestLine = 1023;

}  // namespace

std::optional<std::string> Configuration::valueOf(const std::string& key) const {
    const auto found = std::find_if(lines.rbegin(), lines.rend(), [&key](const auto& line) {
        return line.hasEquals && ::strcasecmp(line.key.c_str(), key.c_str()) == 0;
    });
    return found == lines.rend() ? std::nullopt : std::optional(found->value);
}

int Configuration::numberOf(const std::string& key, int def) const {
    const long number = toLong(valueOf(key).value_or(""), def);
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

Configuration parseConfiguration(const std::string& path, const std::string& text) {
    Configuration result{path, {}, 0};
    int number = 0;
    for (const std::string& whole : strExplode(text, "\n")) {
        ++number;
        if (whole.size() > longestLine) {
            result.tooLong = number;
            break;
        }
        const std::string line = trim(whole);
        if (line.find_first_not_of(whitespace) == std::string::npos || line.front() == '#') {
            continue;
        }
        const std::size_t equals = line.find('=');
        const bool hasEquals = equals != std::string::npos;
        result.lines.push_back(
            {number, line.substr(0, equals), hasEquals ? line.substr(equals + 1) : "", hasEquals});
    }
    return result;
}

}  // namespace corvane::ctl
