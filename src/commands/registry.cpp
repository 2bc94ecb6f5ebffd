#include "commands/registry.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <log4cpp/Category.hh>
#include <optional>
#include <string_view>
#include <utility>

#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "platform/guarded_open.h"
#include "text/exception.h"
#include "text/strconv.h"

namespace corvane {
namespace {

constexpr std::array<std::string_view, 5> rootNames{"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER",
                                                    "HKEY_LOCAL_MACHINE", "HKEY_USERS",
                                                    "HKEY_CURRENT_CONFIG"};

std::string userFile() {
    return correctDirectoryPath(getUserDirectory()) + ".corvane/registry.txt";
}

std::string applicationFile() {
    return correctDirectoryPath(getApplicationDirectory()) + "registry.txt";
}

std::string systemFile() { return "/etc/corvane/registry.txt"; }

std::optional<std::string> valueIn(const std::string& file, const std::string& key) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.fileutil.getRegString.ux");
    const std::string localFile = strconv::utf82acs(file);
    // access(2) would not know of a confinement.
    if (openGuarded(AT_FDCWD, localFile, O_RDONLY).fd == -1) {
        log.debug("doesn't have READ access to file '%s'", file.c_str());
        return std::nullopt;
    }
    Properties store(false);
    store.load(localFile);
    const char* value = store.getProperty(key);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace

RegistryFiles registryFiles() { return {userFile, applicationFile, systemFile}; }

std::string findRegString(const std::string& key, const RegistryFiles& files) {
    std::string places;
    for (const auto& pathOf : files) {
        const std::string file = pathOf();
        if (std::optional<std::string> value = valueIn(file, key)) {
            return *std::move(value);
        }
        places += (places.empty() ? " neither in " : " nor ") + file;
    }
    throw Exception("Can't find registry key '" + key + "'" + places);
}

std::string getRegString(const std::string& root, const std::string& path,
                         const std::string& name) {
    if (std::find(rootNames.begin(), rootNames.end(), root) == rootNames.end()) {
        throw Exception("Wrong root key " + root);
    }
    return findRegString(root + "/" + correctPath(path) + ":" + name, registryFiles());
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
