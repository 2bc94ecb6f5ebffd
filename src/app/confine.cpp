#include "app/confine.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "commands/registry.h"
#include "commands/wndutil.h"
#include "fileutil/paths.h"
#include "platform/opener.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

using platform::Access;
using Grants = std::vector<platform::Grant>;

bool servesAnyOf(const ServerOptions& options, std::initializer_list<std::string_view> commands) {
    return !options.allowedCommands ||
           std::any_of(commands.begin(), commands.end(), [&](std::string_view name) {
               const auto& allowed = *options.allowedCommands;
               return std::find(allowed.begin(), allowed.end(), name) != allowed.end();
           });
}

void add(Grants& grants, const std::string& path, Access access) {
    grants.push_back({strconv::utf82acs(path), access, true});
}

// The file with the secret that the display asks for. It is the tool that reads it.
std::string displaySecret() {
    const char* const path = std::getenv("XAUTHORITY");
    return path == nullptr ? correctDirectoryPath(getUserDirectory()) + ".Xauthority" : path;
}

// Their directories, since an editor puts a new file in the place of the old one.
void addRegistry(Grants& grants) {
    for (const auto& fileOf : registryFiles()) {
        add(grants, getDirectory(fileOf()), Access::Look);
    }
}

Grants grantsOf(const Settings& settings) {
    Grants grants = settings.folders;
    if (settings.server.sameUser) {
        add(grants, "/etc/passwd", Access::Look);  // the names of users that are refused
    }
    if (servesAnyOf(settings.server, {"regQueryValue"})) {
        addRegistry(grants);
    }
    if (servesAnyOf(settings.server, {"getWndRect", "getScreenRect", "setWndPos"})) {
        add(grants, getApplicationDirectory() + wndutil::PROG_INFO, Access::Run);
        add(grants, displaySecret(), Access::Look);
    }
    if (servesAnyOf(settings.server, {"execute"})) {
        add(grants, platform::openerProgram(getApplicationDirectory()), Access::Run);
    }
    return grants;
}

}  // namespace

std::optional<platform::Confinement> prepareConfinement(const Settings& settings) {
    if (settings.folders.empty()) {
        return std::nullopt;
    }
    try {
        return platform::Confinement(grantsOf(settings));
    } catch (const Exception& e) {
        throw ConfigureFailure(concatenate("FOLDERS is not possible: ", e.what()));
    }
}

}  // namespace corvane
