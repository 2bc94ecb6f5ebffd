#include "corvane-play/site.h"

#include <algorithm>
#include <utility>

#include "corvane-play/guard.h"
#include "corvane-play/percent.h"
#include "corvane-play/request_path.h"
#include "fileutil/properties.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

constexpr std::string_view ownName = "corvane-play";
constexpr std::string_view settingsName = "corvane-play.js";

std::optional<Found> open(const Files& files, const std::vector<std::string>& components) {
    ServedFile file = files.open(components);
    if (file.fd == -1) {
        return std::nullopt;
    }
    Found found;
    found.file = std::move(file);
    found.name = components.back();
    return found;
}

std::optional<Found> openStartPage(const Site& site) {
    const bool isOwn = site.page.empty();
    auto found = isOwn ? open(*site.data, {"player.html"}) : open(*site.movie, {site.page});
    if (found) {
        found->isOwnPage = isOwn;
        found->isUserPage = !isOwn;
    }
    return found;
}

// Where the first tag of this name ends in a page in lower case.
std::optional<std::size_t> endOfTag(const std::string& page, std::string_view tag) {
    const std::size_t start = page.find(tag);
    if (start == std::string::npos || start + tag.size() == page.size()) {
        return std::nullopt;
    }
    if (std::string_view(" \t\r\n>").find(page[start + tag.size()]) == std::string_view::npos) {
        return std::nullopt;  // a longer name
    }
    const std::size_t end = page.find('>', start);
    return end == std::string::npos ? std::nullopt : std::optional(end + 1);
}

}  // namespace

SocketRequest parseSocketRequest(std::string_view requestTarget, const Site& site) {
    const auto components = pathComponents(requestTarget);
    if (!components || components->size() < 2 || !isSameSecret((*components)[1], site.token)) {
        return {};
    }
    const std::vector<std::string>& parts = *components;
    if (parts[0] == "alive" && parts.size() == 2) {
        return {SocketRequest::Kind::Alive, {}};
    }
    constexpr std::size_t bridgeParts = 4;
    if (parts[0] != "bridge" || parts.size() != bridgeParts) {
        return {};
    }
    const auto port = parsePort(parts[3]);
    const Target wanted{parts[2], port.value_or(0)};
    const bool isAllowed =
        std::find(site.targets.begin(), site.targets.end(), wanted) != site.targets.end();
    return isAllowed ? SocketRequest{SocketRequest::Kind::Bridge, wanted} : SocketRequest{};
}

std::string bridgePath(const Site& site, const Target& target) {
    return concatenate("/bridge/", site.token, "/", escapeComponent(target.host), "/",
                       std::to_string(target.port));
}

std::optional<Found> findFile(std::string_view requestTarget, const Site& site) {
    auto components = pathComponents(requestTarget);
    if (!site.servesPage() || !components || components->size() < 2 ||
        !isSameSecret(components->front(), site.key)) {
        return std::nullopt;
    }
    components->erase(components->begin());
    const std::vector<std::string>& parts = *components;
    if (parts.front().empty() || (parts.size() == 1 && parts.front() == site.page)) {
        return openStartPage(site);
    }
    if (parts.size() == 1 && parts.front() == settingsName) {
        Found settings;
        settings.name = settingsName;
        settings.isSettings = true;
        return settings;
    }
    if (parts.front() == ownName) {
        return open(*site.data, {parts.begin() + 1, parts.end()});
    }
    return parts.back().empty() ? std::nullopt : open(*site.movie, parts);
}

std::string withScript(std::string_view page, const std::string& key) {
    std::string whole(page);
    if (whole.find(settingsName) != std::string::npos) {
        return whole;
    }
    const std::string lower = corvane::tolower(whole);
    std::size_t place = 0;
    for (const std::string_view tag : {"<head", "<html", "<!doctype"}) {
        if (const auto end = endOfTag(lower, tag)) {
            place = *end;
            break;
        }
    }
    whole.insert(place, concatenate("<script src=\"/", key, "/", settingsName, "\"></script>"));
    return whole;
}

}  // namespace corvane::play
