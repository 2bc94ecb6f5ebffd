// The configuration file and the keys that the start of the program reads from it.
#pragma once

#include <string>

#include "fileutil/properties.h"
#include "server/server.h"
#include "server/server_options.h"

namespace corvane {

inline constexpr const char* CONFIG_FILE = "corvane.conf";
/// Read only when there is no CONFIG_FILE.
inline constexpr const char* OTHER_CONFIG_FILE = "corvane.cfg";

/// Loads the configuration file from `directory`, which ends with "/". Returns false when there is
/// none; that is no failure.
bool loadConfiguration(Properties& store, const std::string& directory);

struct Settings {
    /// Reads all keys with their defaults.
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
};

}  // namespace corvane
