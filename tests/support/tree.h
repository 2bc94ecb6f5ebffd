// What a directory tree looks like, as a value that tests compare.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "support/scratch_directory.h"

namespace corvane::test {

/// For each entry its path below the root, and "directory", "file:" with the bytes, "link:" with
/// the target, or "other".
using Tree = std::map<std::string, std::string>;

inline std::string describe(const std::filesystem::directory_entry& entry) {
    if (entry.is_symlink()) {
        return "link:" + std::filesystem::read_symlink(entry.path()).string();
    }
    if (entry.is_directory()) {
        return "directory";
    }
    return entry.is_regular_file() ? "file:" + readFile(entry.path()) : "other";
}

/// Symbolic links are not followed.
inline Tree treeAt(const std::string& root) {
    Tree tree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        tree[std::filesystem::path(entry.path()).lexically_relative(root)] = describe(entry);
    }
    return tree;
}

}  // namespace corvane::test
