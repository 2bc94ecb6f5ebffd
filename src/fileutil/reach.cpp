#include "fileutil/reach.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>
#include <utility>

#include "fileutil/paths.h"
#include "platform/confinement.h"
#include "platform/file_desc.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr int mostLinks = 40;  // as many as the kernel follows

// Without the separators at its end, before which a link would not be seen as one.
std::string bare(const std::string& path) {
    return path.substr(0, std::max<std::size_t>(path.find_last_not_of(SEPARATOR_DIR) + 1, 1));
}

// All up to the last component; empty for a single one.
std::string parentOf(const std::string& path) {
    return path.substr(0, bare(path).rfind(SEPARATOR_DIR) + 1);  // npos + 1 is 0
}

// Where a link leads to, from the same directory; empty for what is no link.
std::string targetOfLink(int directory, const std::string& name) {
    std::array<char, PATH_MAX> target;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t size = ::readlinkat(directory, name.c_str(), target.data(), target.size());
    if (size <= 0) {
        return "";
    }
    const std::string_view path(target.data(), static_cast<std::size_t>(size));
    return concatenate(path.front() == SEPARATOR_DIR ? "" : parentOf(name), path);
}

}  // namespace

// A directory that can be listed lies in reach: what the server needs for itself it may only read.
bool isWithinReach(int directory, std::string name) {
    if (!platform::isConfined()) {
        return true;
    }
    for (int links = 0; links < mostLinks;) {
        name = bare(name);
        const FileDesc nearest(::openat(directory, name.empty() ? DIR_THIS : name.c_str(),
                                        O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
        const bool isNoDirectory = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
        if (nearest != -1 || !isNoDirectory || name.empty()) {
            return nearest != -1;
        }
        if (std::string target = targetOfLink(directory, name); !target.empty()) {
            name = std::move(target);
            ++links;
        } else {
            name = parentOf(name);
        }
    }
    return false;
}

bool isEntryWithinReach(const std::string& path) {
    return isWithinReach(AT_FDCWD, parentOf(strconv::utf82acs(path)));
}

}  // namespace corvane
