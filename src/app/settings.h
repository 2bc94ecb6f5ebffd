// The configuration file and its keys. Every key is read here, once, but for the programs of file
// extensions ("app.EXT"), which the launcher looks up. A new key needs: its field, its line in
// settings.cpp, its row in setting_keys.h, and a word in packaging/corvane.conf, in the manual page
// and in README's table; tests fail when one of them is missing.
#pragma once

#include <string>
#include <vector>

#include "fileutil/properties.h"
#include "platform/confinement.h"
#include "server/server.h"
#include "server/server_options.h"

namespace corvane {

inline constexpr const char* CONFIG_FILE = "corvane.conf";
/// Read only when there is no CONFIG_FILE.
inline constexpr const char* OTHER_CONFIG_FILE = "corvane.cfg";

/// Loads the configuration file from `directory`, which ends with "/". Returns false when there is
/// none; that is no failure. Throws ConfigureFailure for one that is there and cannot be read.
bool loadConfiguration(Properties& store, const std::string& directory);

/// The keys of the logging set-up, which gets the whole store (see app/logging.h).
struct LogSettings {
    explicit LogSettings(const Properties& store);

    /// "basic", "simple" or a conversion pattern of log4cpp.
    std::string pattern;
    /// A priority's name as log4cpp knows it; it is not checked here.
    std::string priority;
};

struct Settings {
    /// Reads all other keys with their defaults. Throws ConfigureFailure for a number that the
    /// server could not work with, and for folders that are none; what is no number at all counts
    /// as not set.
    explicit Settings(const Properties& store);

    /// Hands over what the server and the commands need to know. The address "any" leaves the
    /// server its own.
    void apply(Server& target) const;

    ServerOptions server;
    /// Whether the log goes to standard error as well, and the program stays in the foreground.
    bool console;
    /// The directory to work in; empty for the one in which the program was started.
    std::string currentDirectory;
    /// Seconds that a run of the window tool may take; 0 for any time.
    int toolTimeout;
    /// What the server is confined to, besides what it needs itself; nothing for no confinement.
    std::vector<platform::Grant> folders;
};

}  // namespace corvane
