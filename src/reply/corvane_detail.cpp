#include "reply/corvane_detail.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace corvane {
namespace {

constexpr std::array<std::string_view, 5> entryKinds{"file", "directory", "share", "server",
                                                     "domain"};

}  // namespace

int knownKind(int kind) {
    return kind >= 0 && static_cast<std::size_t>(kind) < entryKinds.size() ? kind : 1;
}

std::string directory2id(int kind) {
    return std::string(entryKinds[static_cast<std::size_t>(knownKind(kind))]);
}

int id2directory(const std::string& text) {
    for (std::size_t kind = 0; kind < entryKinds.size(); ++kind) {
        if (entryKinds[kind] == text) {
            return static_cast<int>(kind);
        }
    }
    return 0;
}

}  // namespace corvane
