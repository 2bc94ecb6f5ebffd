// The commands as they are written: names and parameters, for whoever sends them. The server's own
// table, with the handlers, is in corvane_server.h; both have the same commands in the same order.
#pragma once

#include <array>
#include <string_view>

namespace corvane {

struct CommandSyntax {
    std::string_view name;
    /// The parameter lines in order, separated by blanks; those in brackets may be left out. One
    /// that is called "data" has all lines up to the end of the request.
    std::string_view parameters;
};

/// Every command but "shutdown", which the server handles before it looks for commands.
inline constexpr auto commandSyntax = std::to_array<CommandSyntax>({
    {"write", "file data"},
    {"makeDir", "directory"},
    {"regQueryValue", "root path name"},
    {"delete", "path"},
    {"execute", "target"},
    {"copy", "source destination [recursive] [include] [exclude]"},
    {"rename", "source destination"},
    {"log", "category priority message"},
    {"readByte", "file offset"},
    {"readText", "file"},
    {"listDir", "directory"},
    {"userDir", "[which]"},
    {"currentDir", ""},
    {"tempDir", ""},
    {"regSetValue", "root path name value"},
    {"getWndRect", "[window]"},
    {"getScreenRect", ""},
    {"setWndPos", "flags [x] [y] [width] [height] [window]"},
    {"bringToFront", "window"},
    {"listNet", "[group]"},
    {"userName", ""},
    {"clipboardGet", ""},
});

}  // namespace corvane
