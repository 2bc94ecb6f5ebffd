#include "corvane-play/files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <utility>

#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "platform/open_flags.h"
#include "text/exception.h"

namespace corvane::play {
namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 28> types{{
    {"swf", "application/x-shockwave-flash"},
    {"html", "text/html; charset=utf-8"},
    {"htm", "text/html; charset=utf-8"},
    {"js", "text/javascript; charset=utf-8"},
    {"mjs", "text/javascript; charset=utf-8"},
    {"css", "text/css; charset=utf-8"},
    {"wasm", "application/wasm"},
    {"json", "application/json"},
    {"xml", "text/xml"},
    {"txt", "text/plain; charset=utf-8"},
    {"csv", "text/csv; charset=utf-8"},
    {"svg", "image/svg+xml"},
    {"png", "image/png"},
    {"jpg", "image/jpeg"},
    {"jpeg", "image/jpeg"},
    {"gif", "image/gif"},
    {"ico", "image/x-icon"},
    {"webp", "image/webp"},
    {"mp3", "audio/mpeg"},
    {"wav", "audio/wav"},
    {"m4a", "audio/mp4"},
    {"flv", "video/x-flv"},
    {"f4v", "video/mp4"},
    {"mp4", "video/mp4"},
    {"ttf", "font/ttf"},
    {"otf", "font/otf"},
    {"woff", "font/woff"},
    {"woff2", "font/woff2"},
}};

}  // namespace

Files::Files(const std::string& directory)
    : directory_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (directory_ == -1) {
        throw FileNotFoundException(directory);
    }
}

ServedFile Files::open(const std::vector<std::string>& components) const {
    FileDesc holder;
    int at = directory_;
    for (std::size_t i = 0; i < components.size(); ++i) {
        const bool isLast = i + 1 == components.size();
        const int flags = O_RDONLY | O_NOFOLLOW | guardedOpen | (isLast ? 0 : O_DIRECTORY);
        FileDesc next(::openat(at, components[i].c_str(), flags));
        if (next == -1) {
            return {};
        }
        holder = std::move(next);
        at = holder;
    }
    struct stat info {};
    if (holder == -1 || ::fstat(holder, &info) != 0 || !S_ISREG(info.st_mode)) {
        return {};
    }
    return {std::move(holder), static_cast<std::uint64_t>(info.st_size)};
}

std::string_view mimeType(std::string_view name) {
    const std::string ending = corvane::tolower(getExtension(std::string(name)));
    const auto* const found = std::find_if(types.begin(), types.end(),
                                           [&](const auto& type) { return type.first == ending; });
    return found == types.end() ? "application/octet-stream" : found->second;
}

}  // namespace corvane::play
