#include "corvane-play/request_path.h"

#include <algorithm>
#include <utility>

#include "corvane-play/percent.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

bool isForbidden(char c) {
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char lastControl = 0x7F;
    const auto byte = static_cast<unsigned char>(c);
    return c == '/' || c == '\\' || byte < firstPrintable || byte == lastControl;
}

bool isSafe(const std::string& component) {
    return !startsWith(component, ".") &&
           std::none_of(component.begin(), component.end(), isForbidden);
}

}  // namespace

std::optional<std::vector<std::string>> pathComponents(std::string_view target) {
    std::string_view path = target.substr(0, target.find_first_of("?#"));
    if (!startsWith(path, "/")) {
        return std::nullopt;
    }
    std::vector<std::string> components;
    while (!path.empty()) {
        path.remove_prefix(1);
        const std::string_view piece = path.substr(0, path.find('/'));
        path.remove_prefix(piece.size());
        auto component = decodePercent(piece);
        if (!component || !isSafe(*component) || (component->empty() && !path.empty())) {
            return std::nullopt;
        }
        components.push_back(std::move(*component));
    }
    return components;
}

}  // namespace corvane::play
