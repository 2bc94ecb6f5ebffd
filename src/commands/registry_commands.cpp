// The commands of the registry emulation.
#include <log4cpp/Category.hh>

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "commands/registry.h"
#include "fileutil/paths.h"

namespace corvane {
namespace {

using log4cpp::Category;

// The hint shows the path as the client sent it, not the corrected one that is looked up.
std::string hintFor(const std::string& root, const std::string& path, const std::string& name) {
    return root + "/" + path + ":" + name;
}

}  // namespace

void CorvaneServer::cmdRegQueryValue(int sock, const std::string& cmd, std::istream& params) {
    static Category& category =
        Category::getInstance("corvane.server.process.client.cmd.regQueryValue");
    const std::string root = getline(params);
    const std::string path = getline(params);
    const std::string name = getline(params);
    const std::string correctedPath = correctPath(path);
    CommandLog(category, sock, cmd)
        .debug(" root '%s' path '%s' value '%s'", root.c_str(), correctedPath.c_str(),
               name.c_str());
    const std::string hint = hintFor(root, path, name);
    orFailed(
        sock, cmd, hint,
        [&] {
            const CorvaneDetail detail("value", getRegString(root, correctedPath, name), false);
            sendResult(sock, cmd, true, std::span(&detail, 1), hint);
        },
        [](const Exception& e) { category.error(e.message); });
}

void CorvaneServer::cmdRegSetValue(int sock, const std::string& cmd, std::istream& params) {
    static Category& category =
        Category::getInstance("corvane.server.process.client.cmd.regSetValue");
    const std::string root = getline(params);
    const std::string path = getline(params);
    const std::string key = getline(params);
    const std::string value = getline(params);
    const std::string correctedPath = correctPath(path);
    CommandLog(category, sock, cmd)
        .debug(" root '%s' path '%s' key '%s' value '%s'", root.c_str(), correctedPath.c_str(),
               key.c_str(), value.c_str());
    const std::string hint = hintFor(root, path, key);
    orFailed(
        sock, cmd, hint,
        [&] {
            setRegString(root, correctedPath, key, value);
            sendResult(sock, cmd, true, hint);
        },
        [](const Exception& e) { category.error(e.message); });
}

}  // namespace corvane
