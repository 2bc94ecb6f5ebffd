#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>

#include "app/settings.h"
#include "corvane-play/corvane_program.h"
#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "platform/file_desc.h"

namespace corvane::play {
namespace {

// Beside this program in a build directory, else where an installation has it.
std::string installedDirectory(const std::string& ownDirectory) {
    std::string installed = ownDirectory + "../lib/corvane/";
    return isExecutable(installed + "corvane") ? installed : ownDirectory;
}

bool isTaken(std::uint16_t port, in_addr_t address) {
    const FileDesc probe(::socket(AF_INET, SOCK_STREAM, 0));
    const int on = 1;
    ::setsockopt(probe, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    place.sin_addr.s_addr = htonl(address);
    return ::bind(probe, reinterpret_cast<const sockaddr*>(&place), sizeof place) ==
               -1 &&  // NOLINT
           errno == EADDRINUSE;
}

}  // namespace

bool isListening(std::uint16_t port) {
    // One socket may have the address of all interfaces, another that of one of them, on some
    // systems: each is asked for.
    return isTaken(port, INADDR_LOOPBACK) || isTaken(port, INADDR_ANY);
}

Installation findInstallation(const Options& options, const std::string& ownDirectory) {
    Properties store(false);
    std::string directory = options.configuration;
    if (directory.empty()) {
        directory = installedDirectory(ownDirectory);
        loadConfiguration(store, directory);
    } else if (isDirectory(directory)) {
        directory = slashPath(directory);
        if (!loadConfiguration(store, directory)) {
            throw Exception("there is no configuration in " + directory);
        }
    } else {
        store.load(directory);
        directory = getDirectory(getFullPath(directory));
    }
    const Settings settings(store);
    Installation found{directory + "corvane", settings.server.port, settings.console};
    if (!isExecutable(found.executable) || (options.port && *options.port != found.port)) {
        found.executable.clear();
    }
    found.port = options.port.value_or(static_cast<std::uint16_t>(found.port));
    return found;
}

}  // namespace corvane::play
