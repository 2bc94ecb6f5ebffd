// The commands of the registry emulation.

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "commands/registry.h"
#include "fileutil/paths.h"

namespace corvane {
namespace {

// The hint shows the path as the client sent it, not the corrected one that is looked up.
std::string hintFor(const std::string& root, const std::string& path, const std::string& name) {
    return root + "/" + path + ":" + name;
}

}  // namespace

void CorvaneServer::cmdRegQueryValue(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    const std::string root = getline(params);
    const std::string path = getline(params);
    const std::string name = getline(params);
    const std::string correctedPath = correctPath(path);
    log.debug(" root '%s' path '%s' value '%s'", root.c_str(), correctedPath.c_str(), name.c_str());
    const std::string hint = hintFor(root, path, name);
    const auto report = [&log](const Exception& e) { log.reason(e); };
    orFailed(
        sock, cmd, hint,
        [&] {
            const CorvaneDetail detail("value", getRegString(root, correctedPath, name), false);
            reportingLoss([&] { sendResult(sock, cmd, true, std::span(&detail, 1), hint); },
                          report);
        },
        report);
}

void CorvaneServer::cmdRegSetValue(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    const std::string root = getline(params);
    const std::string path = getline(params);
    const std::string key = getline(params);
    const std::string value = getline(params);
    const std::string correctedPath = correctPath(path);
    log.debug(" root '%s' path '%s' key '%s' value '%s'", root.c_str(), correctedPath.c_str(),
              key.c_str(), value.c_str());
    const std::string hint = hintFor(root, path, key);
    orFailed(
        sock, cmd, hint,
        [&] {
            setRegString(root, correctedPath, key, value);
            sendResult(sock, cmd, true, hint);
        },
        [&log](const Exception& e) { log.reason(e); });
}

}  // namespace corvane
