// The order in which trees are copied and removed: depth first, entries in the order of the system,
// without recursion, so that depth costs memory only.
#pragma once

#include <cstddef>
#include <vector>

#include "fileutil/open_directory.h"

namespace corvane {

/// Walks all that is below the directory in which `visitor` stands. The visitor has
///   entries()    all entries of the directory in which it stands now,
///   file(name)   called for each entry that is no directory,
///   enter(name)  goes into a subdirectory, or returns false to leave it out,
///   leave(name)  goes back, when all that is in the subdirectory has been visited.
template <typename Visitor>
void walkTree(Visitor& visitor) {
    struct Level {
        std::vector<DirectoryEntry> entries;
        std::size_t next = 0;
    };
    std::vector<Level> levels;
    levels.push_back({visitor.entries()});
    while (true) {
        Level& level = levels.back();
        if (level.next < level.entries.size()) {
            const DirectoryEntry& entry = level.entries[level.next++];
            if (!entry.directory) {
                visitor.file(entry.name);
            } else if (visitor.enter(entry.name)) {
                levels.push_back({visitor.entries()});
            }
            continue;
        }
        levels.pop_back();
        if (levels.empty()) {
            return;
        }
        const Level& parent = levels.back();
        visitor.leave(parent.entries[parent.next - 1].name);
    }
}

}  // namespace corvane
