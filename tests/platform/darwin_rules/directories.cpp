// The order of a directory: the entries come backwards, as unlike that of the file system below as
// can be, and without their types, as from volumes that other machines share.
#include <dirent.h>

#include <cerrno>
#include <cstddef>
#include <map>
#include <vector>

#include "platform/darwin_rules/rules.h"

namespace {

using darwin_rules::hold;
using darwin_rules::next;

// What is left to be listed of each open directory; the next entry is the last.
std::map<DIR*, std::vector<dirent>>& listings() {
    static std::map<DIR*, std::vector<dirent>> all;
    return all;
}

std::vector<dirent> readAll(DIR* directory) {
    static const auto real = next<decltype(&::readdir)>("readdir");
    std::vector<dirent> entries;
    while (const dirent* entry = real(directory)) {
        entries.push_back(*entry);
        entries.back().d_type = DT_UNKNOWN;
    }
    return entries;
}

}  // namespace

extern "C" {

dirent* readdir(DIR* directory) {
    static const auto real = next<decltype(&readdir)>("readdir");
    if (!hold()) {
        return real(directory);
    }
    static dirent current;
    auto found = listings().find(directory);
    if (found == listings().end()) {
        found = listings().emplace(directory, readAll(directory)).first;
        if (found->second.empty() && errno != 0) {
            listings().erase(found);
            return nullptr;
        }
    }
    if (found->second.empty()) {
        return nullptr;
    }
    current = found->second.back();
    found->second.pop_back();
    return &current;
}

dirent64* readdir64(DIR* directory) { return reinterpret_cast<dirent64*>(readdir(directory)); }

int closedir(DIR* directory) {
    static const auto real = next<decltype(&closedir)>("closedir");
    listings().erase(directory);
    return real(directory);
}
}
