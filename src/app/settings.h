// The configuration file and the keys that the start of the program reads from it.
#pragma once

#include <string>
#include <vector>

#include "fileutil/properties.h"
#include "server/server.h"

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

    /// Hands over what the server and the commands need to know.
    void apply(Server& target) const;

    int port;
    int inactivity;
    bool console;
    std::string currentDirectory;
    std::string address;
    bool closeOnFatal;
    bool debugRequestRead;
    int requestTimeout;
    int maxRequest;
    int toolTimeout;
    bool allowHttp;
    std::vector<std::string> commands;
};

}  // namespace corvane
