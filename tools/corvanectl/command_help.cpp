#include "corvanectl/command_help.h"

#include <algorithm>
#include <array>
#include <vector>

#include "text/strings.h"

namespace corvane::ctl {
namespace {

struct Entry {
    std::string_view command;
    CommandHelp help;
};

constexpr std::string_view tailNote =
    "An existing file is written over, but not shortened: what it has beyond the length of the\n"
    "source stays. After \"abc\" was put over \"12345\" the file has \"abc45\". With --replace the "
    "target\nhas the contents of the source and nothing else.";

constexpr auto pages = std::to_array<Entry>({
    {"write",
     {"Creates a file, or replaces what is in it, with standard input.",
      "file: where to; its directory must be there, \"?\" and \"*\" in the name are dropped\n"
      "data: standard input to its end; the bytes 0x00 and 0x01 cannot be sent",
      "echo hello | corvanectl write /tmp/greeting.txt"}},
    {"makeDir",
     {"Makes a directory; one that is there already is a success.",
      "directory: its parent must be there", "corvanectl makeDir /tmp/games"}},
    {"regQueryValue",
     {"Prints a value of the registry, which is a text file on this system.",
      "root: HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS or\n"
      "HKEY_CURRENT_CONFIG\n"
      "path: with \\ or /, without one at the end\n"
      "name: of the value",
      "corvanectl regQueryValue HKEY_CURRENT_USER 'Software\\Acme\\Game' Player"}},
    {"delete",
     {"Deletes a file, or a directory with all that is in it; one that is not there is a success.",
      "path: what to delete; there is no question and no way back",
      "corvanectl delete /tmp/greeting.txt"}},
    {"execute",
     {"Opens a document, an address or a movie, or starts a program, as a double click would.",
      "target: a path or an address; the last \"?\" and all behind it are dropped",
      "corvanectl execute https://example.org/"}},
    {"copy",
     {"Copies a file, or what is in a directory.",
      "--replace: put the file in the place of an existing one, for files only\n"
      "source: a file or a directory\n"
      "destination: for a file: a file, or a directory that is there; for a directory: a "
      "directory\n"
      "that is there\n"
      "recursive: false: not the directories in the source; anything else: those too\n"
      "include: extensions without dot, separated by commas; all files without it\n"
      "exclude: extensions that are left out",
      "corvanectl copy --replace notes.txt backup.txt", tailNote}},
    {"rename",
     {"Moves a file, or an empty directory, by copying and deleting.",
      "--replace: put the file in the place of an existing one, for files only\n"
      "source: a file, or an empty directory\n"
      "destination: the new name, or a directory that is there",
      "corvanectl rename --replace new.txt notes.txt", tailNote}},
    {"log",
     {"Writes a line into the server's log.",
      "category: appended to \"ext.log.\"; may be empty\n"
      "priority: DEBUG, INFO, NOTICE, WARN, ERROR, CRIT, ALERT, FATAL or a number; empty: INFO\n"
      "message: one line",
      "corvanectl log game WARN 'the level took long'"}},
    {"readByte",
     {"Prints one byte of a file as a number from 0 to 255.",
      "file: what to read\n"
      "offset: from 0; text that is no number counts as 0",
      "corvanectl readByte /etc/hostname 0"}},
    {"readText",
     {"Prints a file byte for byte, without bytes 0x00, which are left out.", "file: what to read",
      "corvanectl readText /tmp/greeting.txt"}},
    {"listDir",
     {"Lists a directory: in columns on a terminal, else one entry on each line.",
      "directory: what to list; directories in it end with /", "corvanectl -l listDir /tmp"}},
    {"userDir",
     {"Prints the home directory, or the desktop of the server's user.",
      "which: desktop for the desktop; the home directory without it",
      "corvanectl userDir desktop"}},
    {"currentDir",
     {"Prints the server's current directory, where relative paths begin.", "",
      "corvanectl currentDir"}},
    {"tempDir", {"Prints the server's directory for temporary files.", "", "corvanectl tempDir"}},
    {"regSetValue",
     {"Always fails here: the registry can only be read.",
      "root: as for regQueryValue\n"
      "path: with \\ or /\n"
      "name: of the value\n"
      "value: one line",
      "corvanectl regSetValue HKEY_CURRENT_USER 'Software\\Acme\\Game' Player Grace"}},
    {"getWndRect",
     {"Prints position and size of a window in pixels.",
      "window: its title; the Flash player without it",
      "corvanectl getWndRect 'Adobe Flash Player'"}},
    {"getScreenRect", {"Prints the size of the screen in pixels.", "", "corvanectl getScreenRect"}},
    {"setWndPos",
     {"Moves a window, or changes its size.",
      "flags: 1: position, 2: size, 3: both; only the numbers of what is set follow\n"
      "x: of the left edge, with flags 1 and 3\n"
      "y: of the upper edge, with flags 1 and 3\n"
      "width: with flags 2 and 3\n"
      "height: with flags 2 and 3\n"
      "window: its title; the Flash player without it",
      "corvanectl setWndPos 1 -10 0 'Adobe Flash Player'"}},
    {"bringToFront",
     {"Brings a window to the front; fails where the system does not offer it.",
      "window: its title", "corvanectl bringToFront 'Adobe Flash Player'"}},
    {"listNet",
     {"Lists the network; fails where the system does not offer it.",
      "group: a domain or server; the domains without it", "corvanectl listNet"}},
    {"userName",
     {"Prints the login name of the server's user; empty outside of a log-in session.", "",
      "corvanectl userName"}},
    {"clipboardGet",
     {"Prints the text of the clipboard; fails where the system does not offer it.", "",
      "corvanectl clipboardGet"}},
    {"shutdown", {"Ends the server.", "", "corvanectl shutdown"}},
});

constexpr std::string_view separator = ": ";

struct Line {
    std::string name;
    std::string meaning;
};

// A line without "name: " goes on with the meaning of the one before.
std::vector<Line> linesOf(std::string_view parameters) {
    std::vector<Line> lines;
    for (const std::string& text : strExplode(parameters, "\n")) {
        const std::size_t end = text.find(separator);
        const bool isNew = end != std::string::npos && text.find(' ') == end + 1;
        lines.push_back(isNew ? Line{text.substr(0, end), text.substr(end + separator.size())}
                              : Line{"", text});
    }
    return lines;
}

std::string indented(std::string_view text) {
    std::string result;
    for (const std::string& line : strExplode(text, "\n")) {
        result += concatenate("   ", line, "\n");
    }
    return result;
}

std::string parameterTable(std::string_view parameters) {
    const std::vector<Line> lines = linesOf(parameters);
    std::size_t widest = 0;
    for (const Line& line : lines) {
        widest = std::max(widest, line.name.size());
    }
    std::string table;
    for (const Line& line : lines) {
        table += concatenate("   ", line.name, std::string(widest + 2 - line.name.size(), ' '),
                             line.meaning, "\n");
    }
    return table;
}

}  // namespace

const CommandHelp* findHelp(std::string_view command) {
    const auto* const found =
        std::find_if(pages.begin(), pages.end(),
                     [command](const Entry& entry) { return entry.command == command; });
    return found == pages.end() ? nullptr : &found->help;
}

std::string helpPage(const CommandUsage& command, const CommandHelp& help) {
    std::string page =
        concatenate("Usage: corvanectl ", usageLine(command), "\n\n", help.sentence, "\n");
    if (!help.note.empty()) {
        page += concatenate("\n", help.note, "\n");
    }
    if (!help.parameters.empty()) {
        page += "\nParameters:\n" + parameterTable(help.parameters);
    }
    return page + "\nExample:\n" + indented(help.example);
}

}  // namespace corvane::ctl
