#include "app/settings.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "commands/wndutil.h"
#include "log/default_layout.h"
#include "platform/guarded_open.h"
#include "platform/io.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr int defaultPort = 54321;
constexpr int largestPort = 65535;

// What keeps a file that is there from being read; empty for nothing, and for a file that is not
// there.
std::string obstacleTo(const std::string& path) {
    const OpenedFile file = openGuarded(AT_FDCWD, path, O_RDONLY);
    if (file.fd == -1) {
        return errno == ENOENT ? "" : std::strerror(errno);
    }
    if (S_ISFIFO(file.info.st_mode)) {
        return "it is a pipe";
    }
    char first = '\0';
    return readSome(file.fd, {&first, 1}) == -1 ? std::strerror(errno) : "";
}

// Who has written a configuration does not want the defaults, which close nothing.
bool loadIfThere(Properties& store, const std::string& path) {
    if (const std::string obstacle = obstacleTo(path); !obstacle.empty()) {
        throw ConfigureFailure("Cannot read the configuration file " + path + ": " + obstacle);
    }
    try {
        store.load(path);
        return true;
    } catch (const FileNotFoundException&) {
        return false;
    }
}

int numberOf(const Properties& store, const std::string& key, int def, int lowest, int highest) {
    const int number = store.getInt(key, def);
    if (number < lowest || number > highest) {
        const std::string text = store.getPropertyAsString(key, "");
        throw ConfigureFailure(format("%s=%s is not possible: it must be a number from %d to %d",
                                      key.c_str(), text.c_str(), lowest, highest));
    }
    return number;
}

// Limits below 0 make no sense; they count as "no limit".
int limitOf(const Properties& store, const std::string& key) {
    return std::max(0, store.getInt(key, 0));
}

// Nothing for an empty text. One that holds commas only allows no command: a list that was meant to
// restrict must not open everything because of a slip.
std::optional<std::vector<std::string>> commandsOf(const std::string& text) {
    if (text.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (const std::string& piece : strExplode(text, ",")) {
        if (piece.find_first_not_of(whitespace) != std::string::npos) {
            names.push_back(trim(piece));
        }
    }
    return names;
}

// One entry of FOLDERS. Whether it is there is seen when the confinement is prepared.
platform::Grant folderOf(const std::string& entry) {
    using platform::Access;
    const bool isProgram = startsWith(entry, "x=");
    const bool isReadOnly = startsWith(entry, "ro=");
    const std::string path = entry.substr(isProgram ? 2 : isReadOnly ? 3 : 0);
    if (!startsWith(path, "/")) {
        throw ConfigureFailure(
            format("FOLDERS is not possible: '%s' is no full path; only ro= and "
                   "x= may stand in front of one",
                   entry.c_str()));
    }
    return {strconv::utf82acs(path), isProgram    ? Access::Run
                                     : isReadOnly ? Access::Read
                                                  : Access::Change};
}

std::vector<platform::Grant> foldersOf(const std::string& text) {
    std::vector<platform::Grant> folders;
    if (!text.empty()) {
        for (const std::string& entry : strExplode(text, ":")) {
            folders.push_back(folderOf(entry));
        }
    }
    return folders;
}

}  // namespace

bool loadConfiguration(Properties& store, const std::string& directory) {
    return loadIfThere(store, directory + CONFIG_FILE) ||
           loadIfThere(store, directory + OTHER_CONFIG_FILE);
}

LogSettings::LogSettings(const Properties& store)
    : pattern(store.getPropertyAsString("log4cpp.pattern", defaultPattern)),
      priority(store.getPropertyAsString("log4cpp.priority", "DEBUG")) {}

Settings::Settings(const Properties& store)
    : server{.address = store.getPropertyAsString("ADDRESS", "127.0.0.1"),
             .port = numberOf(store, "PORT", defaultPort, 0, largestPort),
             .inactivity = numberOf(store, "INACTIVITY", 0, 0, INT_MAX),
             .closeOnFatal = store.getBool("CLOSEONFATAL", false),
             .debugRequestRead = store.getBool("DEBUGREQUESTREAD", false),
             .requestTimeout = limitOf(store, "REQUESTTIMEOUT"),
             .maxRequest = limitOf(store, "MAXREQUEST"),
             .allowHttp = store.getBool("ALLOWHTTP", false),
             .sameUser = store.getBool("SAMEUSER", false),
             .allowedCommands = commandsOf(store.getPropertyAsString("COMMANDS", "")),
             .shutdownOnDisconnect = store.getInt("SHUTDOWNONDISCONNECT", 0)},
      console(store.getBool("CONSOLE", true)),
      currentDirectory(store.getPropertyAsString("CURRDIR", "")),
      toolTimeout(limitOf(store, "TOOLTIMEOUT")),
      folders(foldersOf(store.getPropertyAsString("FOLDERS", ""))) {}

void Settings::apply(Server& target) const {
    std::string ownAddress = std::move(target.options.address);
    target.options = server;
    if (server.address == "any") {
        target.options.address = std::move(ownAddress);
    }
    wndutil::setToolTimeout(toolTimeout);
}

}  // namespace corvane
