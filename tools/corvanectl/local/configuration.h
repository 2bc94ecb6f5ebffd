// The configuration file as it is written, so that what the server passes over in silence can be
// shown. It is taken apart by the server's rules (fileutil/properties.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane::ctl {

struct ConfigurationLine {
    int number;
    /// As they are, with blanks beside the "=".
    std::string key;
    std::string value;
    bool hasEquals;
};

struct Configuration {
    std::string path;
    std::vector<ConfigurationLine> lines;
    /// The number of a line that is too long, with which the server stops reading; 0 for none.
    int tooLong = 0;

    /// The last value of the key, in any letter case; nothing when it is not set.
    std::optional<std::string> valueOf(const std::string& key) const;
    /// The number that it begins with; `def` without one.
    int numberOf(const std::string& key, int def) const;
};

/// Takes the text of the file apart. Comments and empty lines are left out.
Configuration parseConfiguration(const std::string& path, const std::string& text);

}  // namespace corvane::ctl
