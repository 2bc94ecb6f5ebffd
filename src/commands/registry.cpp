#include "commands/registry.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <log4cpp/Category.hh>
#include <string_view>

#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "text/exception.h"
#include "text/strconv.h"

namespace corvane {
namespace {

constexpr std::array<std::string_view, 5> rootNames{"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER",
                                                    "HKEY_LOCAL_MACHINE", "HKEY_USERS",
                                                    "HKEY_CURRENT_CONFIG"};

// In the order in which they are searched.
std::array<std::string, 3> registryFiles() {
    return {correctDirectoryPath(getUserDirectory()) + ".corvane/registry.txt",
            correctDirectoryPath(getApplicationDirectory()) + "registry.txt",
            "/etc/corvane/registry.txt"};
}

}  // namespace

std::string getRegString(const std::string& root, const std::string& path,
                         const std::string& name) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.fileutil.getRegString.ux");
    if (std::find(rootNames.begin(), rootNames.end(), root) == rootNames.end()) {
        throw Exception("Wrong root key " + root);
    }
    const std::string key = root + "/" + correctPath(path) + ":" + name;
    const std::array<std::string, 3> files = registryFiles();
    for (const std::string& file : files) {
        const std::string localFile = strconv::utf82acs(file);
        if (::access(localFile.c_str(), R_OK) != 0) {
            log.debug("doesn't have READ access to file '%s'", file.c_str());
            continue;
        }
        Properties store(false);
        store.load(localFile);
        if (const char* value = store.getProperty(key); value != nullptr) {
            return value;
        }
    }
    throw Exception("Can't find registry key '" + key + "' neither in " + files[0] + " nor " +
                    files[1] + " nor " + files[2]);
}

std::string getRegString(const std::string& root, const std::string& path, const std::string& name,
                         const std::string& defaultValue) {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.fileutil.getRegString");
    try {
        return getRegString(root, path, name);
    } catch (const Exception& e) {
        log.error(e.message);
        return defaultValue;
    }
}

void setRegString(const std::string& /*root*/, const std::string& /*path*/,
                  const std::string& /*name*/, const std::string& /*value*/) {
    throw Exception("setRegString is unsupported");
}

}  // namespace corvane
