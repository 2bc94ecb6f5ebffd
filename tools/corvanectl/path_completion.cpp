#include "corvanectl/path_completion.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "corvanectl/server_path.h"
#include "corvanectl/session.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

bool isLike(std::string_view name, const std::string& begin) {
    const bool isOdd = std::any_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
    });
    return !isOdd && startsWith(name, begin) && (!startsWith(name, ".") || startsWith(begin, "."));
}

struct Close {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

bool isDirectory(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

std::vector<std::string> serverPathsLike(const std::string& begin, Wanted wanted,
                                         const Endpoint& endpoint) {
    const std::string directory = directoryPart(begin);
    const std::string name = namePart(begin);
    std::vector<std::string> paths;
    try {
        const Reply listing =
            Session(endpoint).ask("listDir", {directory.empty() ? "." : directory});
        for (const ReplyDetail& entry : listing.details) {
            const bool isWanted = wanted == Wanted::All || entry.id == "directory";
            if (isWanted && isLike(entry.value, name)) {
                paths.push_back(directory + entry.value);
            }
        }
    } catch (const Exception&) {
        paths.clear();
    }
    return paths;
}

std::vector<std::string> localPaths(const std::string& begin) {
    const std::string directory = directoryPart(begin);
    const std::string name = namePart(begin);
    std::vector<std::string> paths;
    const std::unique_ptr<DIR, Close> stream(
        ::opendir(directory.empty() ? "." : directory.c_str()));
    while (const dirent* const entry = stream ? ::readdir(stream.get()) : nullptr) {
        const std::string_view found = entry->d_name;
        if (isLike(found, name) && found != "." && found != "..") {
            std::string path = directory + std::string(found);
            path += isDirectory(path) ? "/" : "";
            paths.push_back(std::move(path));
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

}  // namespace corvane::ctl
