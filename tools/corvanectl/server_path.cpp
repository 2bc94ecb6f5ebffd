#include "corvanectl/server_path.h"

#include <algorithm>
#include <vector>

#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string withSlashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string directoryPart(std::string_view path) {
    return std::string(path.substr(0, path.rfind('/') + 1));  // npos + 1 is 0
}

std::string namePart(std::string_view path) {
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string inDirectory(const std::string& directory, std::string_view name) {
    return concatenate(directory, endsWith(directory, "/") ? "" : "/", name);
}

std::string fromRoot(const std::string& path, const std::string& current) {
    return startsWith(path, "/") ? path : inDirectory(current, path);
}

std::string normalised(const std::string& path) {
    std::vector<std::string> parts;
    for (const std::string& part : strExplode(path, "/")) {
        if (part == "..") {
            parts.resize(parts.size() - (parts.empty() ? 0 : 1));
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
    }
    return "/" + strImplde(parts, "/");
}

bool equalButForCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

void requireExactName(const std::string& path) {
    if (path.empty()) {
        throw Exception("an empty name is no file");
    }
    if (path.find_first_of("?*") != std::string::npos) {
        throw Exception(
            concatenate("'", path, "' has \"?\" or \"*\", which the server drops from names"));
    }
}

}  // namespace corvane::ctl
