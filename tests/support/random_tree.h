// Random directory trees for tests that compare the program with a model of it.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "support/scratch_directory.h"

namespace corvane::test {

class RandomTree {
  public:
    explicit RandomTree(unsigned seed) : random_(seed) {}

    /// A number from 0 to `limit` - 1.
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }
    bool chance(std::size_t percent) { return below(100) < percent; }

    /// One of a few names, so that two trees have some in common.
    std::string name() {
        static const std::vector<std::string> stems{"a",  "b",        "C",    "d e",
                                                    ".h", "\xC4\x85", "\xFFx"};
        static const std::vector<std::string> extensions{"", ".swf", ".jpg", ".TXT", "."};
        return stems[below(stems.size())] + extensions[below(extensions.size())];
    }

    std::string bytes() {
        std::string text(chance(10) ? below(100'000) : below(40), '\0');
        for (char& byte : text) {
            byte = static_cast<char>(below(256));
        }
        return text;
    }

    /// Fills `directory` with files and directories. Names of directories end with "D" and those of
    /// files begin with "f", so that a file of one tree never meets a directory of another.
    void fill(const std::string& directory, int depth) {
        std::filesystem::create_directories(directory);
        for (std::size_t count = below(6); count > 0; --count) {
            if (depth > 0 && chance(40)) {
                fill(directory + "/" + name() + "D", depth - 1);
            } else {
                writeFile(directory + "/f" + name(), bytes());
            }
        }
    }

    /// A random directory of the tree at `root`, itself included.
    std::string directoryIn(const std::string& root) {
        std::vector<std::string> all{root};
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (entry.is_directory() && !entry.is_symlink()) {
                all.push_back(entry.path());
            }
        }
        return all[below(all.size())];
    }

  private:
    std::mt19937 random_;
};

}  // namespace corvane::test
