// What a line of the server's log says of itself. The layout can be configured, so that only what
// no layout changes is relied on where a line does not have the default one.
#pragma once

#include <string>
#include <string_view>

namespace corvane::ctl {

/// As log4cpp names them, the most important first.
enum class Level { Emerg, Fatal, Alert, Crit, Error, Warn, Notice, Info, Debug, Unknown };

/// Unknown for any other text; in any letter case.
Level levelNamed(std::string_view name);

/// The first line without its end, which it takes off the text.
std::string_view takeLine(std::string_view& lines);

struct LogLine {
    Level level = Level::Unknown;
    /// Empty unless the line has the default layout.
    std::string_view category;
    /// All of a line that has another layout.
    std::string_view message;
};

/// Keeps views of `line`.
LogLine parseLogLine(std::string_view line);

/// Whether the line names the address, "127.0.0.1:40000", or without its port.
bool namesClient(std::string_view line, std::string_view address);

/// Whether it is about the command.
bool namesCommand(const LogLine& line, const std::string& command);

}  // namespace corvane::ctl
