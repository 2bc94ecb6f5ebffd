#include "commands/corvane_detail.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace corvane {
namespace {

constexpr std::array<std::string_view, 5> entryKinds{"file", "directory", "share", "server",
                                                     "domain"};

}  // namespace

std::string directory2id(int kind) {
    const bool known = kind >= 0 && static_cast<std::size_t>(kind) < entryKinds.size();
    return std::string(entryKinds[known ? static_cast<std::size_t>(kind) : 1]);
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
