#include "app/settings.h"

#include <algorithm>

#include "commands/wndutil.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr int defaultPort = 54321;

bool loadIfThere(Properties& store, const std::string& path) {
    try {
        store.load(path);
        return true;
    } catch (const FileNotFoundException&) {
        return false;
    }
}

// Limits below 0 make no sense; they count as "no limit".
int limitOf(const Properties& store, const std::string& key) {
    return std::max(0, store.getInt(key, 0));
}

std::vector<std::string> listOf(const std::string& text) {
    std::vector<std::string> items;
    for (const std::string& piece : strExplode(text, ",")) {
        if (piece.find_first_not_of(whitespace) != std::string::npos) {
            items.push_back(trim(piece));
        }
    }
    return items;
}

}  // namespace

bool loadConfiguration(Properties& store, const std::string& directory) {
    return loadIfThere(store, directory + CONFIG_FILE) ||
           loadIfThere(store, directory + OTHER_CONFIG_FILE);
}

Settings::Settings(const Properties& store)
    : port(store.getInt("PORT", defaultPort)),
      inactivity(store.getInt("INACTIVITY", 0)),
      console(store.getBool("CONSOLE", true)),
      currentDirectory(store.getPropertyAsString("CURRDIR", "")),
      address(store.getPropertyAsString("ADDRESS", "127.0.0.1")),
      closeOnFatal(store.getBool("CLOSEONFATAL", false)),
      debugRequestRead(store.getBool("DEBUGREQUESTREAD", false)),
      requestTimeout(limitOf(store, "REQUESTTIMEOUT")),
      maxRequest(limitOf(store, "MAXREQUEST")),
      toolTimeout(limitOf(store, "TOOLTIMEOUT")),
      allowHttp(store.getBool("ALLOWHTTP", false)),
      commands(listOf(store.getPropertyAsString("COMMANDS", ""))) {}

void Settings::apply(Server& target) const {
    if (address != "any") {
        target.address = address;
    }
    target.port = port;
    target.inactivity = inactivity;
    target.closeOnFatal = closeOnFatal;
    target.debugRequestRead = debugRequestRead;
    target.requestTimeout = requestTimeout;
    target.maxRequest = maxRequest;
    target.allowHttp = allowHttp;
    target.allowedCommands = commands;
    wndutil::setToolTimeout(toolTimeout);
}

}  // namespace corvane
