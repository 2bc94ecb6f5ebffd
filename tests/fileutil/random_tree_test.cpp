// Copying and removing random trees, compared with a model that is written with std::filesystem.
#include "support/random_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "fileutil/file_operations.h"
#include "support/scratch_directory.h"
#include "support/tree.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::RandomTree;

constexpr unsigned rounds = 60;

bool contains(const std::vector<std::string>& list, const std::string& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

// The extension as fs::path sees it, but for names that begin with a dot.
std::string extensionOf(const fs::path& path) {
    fs::path prefixed = "x";
    prefixed += path.filename();
    return prefixed.has_extension() ? prefixed.extension().string().substr(1) : "";
}

bool taken(const fs::path& file, const CopyOptions& options) {
    const std::string extension = extensionOf(file);
    return (options.includeExts.empty() || contains(options.includeExts, extension)) &&
           !contains(options.excludeExts, extension);
}

// What `dst` must look like after a copy of `src` into it.
test::Tree expectedAfterCopy(const std::string& src, const std::string& dst,
                             const CopyOptions& options) {
    test::Tree expected = test::treeAt(dst);
    for (const auto& [name, content] : test::treeAt(src)) {
        if (!options.recursive && name.find('/') != std::string::npos) {
            continue;
        }
        if (content == "directory") {
            if (options.recursive) {
                expected[name] = content;
            }
        } else if (taken(name, options)) {
            const std::string bytes = "file:" + test::readFile(src + "/" + name);
            std::string& target = expected[name];
            target = bytes + (target.size() > bytes.size() ? target.substr(bytes.size()) : "");
        }
    }
    return expected;
}

CopyOptions randomOptions(RandomTree& random) {
    CopyOptions options;
    options.recursive = random.chance(80);
    for (const char* extension : {"swf", "jpg", "txt", ""}) {
        if (random.chance(20)) {
            options.addExt(true, extension);
        }
        if (random.chance(20)) {
            options.addExt(false, extension);
        }
    }
    return options;
}

TEST(RandomTrees, AreCopiedAsTheModelSays) {
    for (unsigned seed = 1; seed <= rounds; ++seed) {
        RandomTree random(seed);
        const test::ScratchDirectory scratch;
        random.fill(scratch / "src", 4);
        random.fill(scratch / "dst", 4);
        fs::create_symlink(scratch.file("outside", "linked"), scratch / "src/fl.swf");
        const CopyOptions options = randomOptions(random);
        const test::Tree source = test::treeAt(scratch / "src");
        const test::Tree expected = expectedAfterCopy(scratch / "src", scratch / "dst", options);
        copyDirectory(scratch / "src", scratch / "dst", &options);
        ASSERT_TRUE(test::treeAt(scratch / "dst") == expected) << "seed " << seed;
        ASSERT_TRUE(test::treeAt(scratch / "src") == source) << "seed " << seed;
    }
}

TEST(RandomTrees, AreRemovedAndNothingElse) {
    for (unsigned seed = 1; seed <= rounds; ++seed) {
        RandomTree random(seed);
        const test::ScratchDirectory scratch;
        const test::ScratchDirectory model;
        random.fill(scratch / "outside", 3);
        random.fill(scratch / "tree", 4);
        for (std::size_t i = random.below(4); i > 0; --i) {
            fs::create_symlink(random.directoryIn(scratch / "outside"),
                               random.directoryIn(scratch / "tree") + "/l" + std::to_string(i));
            fs::create_symlink("nowhere",
                               random.directoryIn(scratch / "tree") + "/b" + std::to_string(i));
        }
        fs::copy(scratch.path(), model.path(),
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        const std::string below = random.directoryIn(scratch / "tree");
        fs::remove_all(model / below.substr(scratch.path().size()));
        removeDirectory(below, true);
        ASSERT_TRUE(test::treeAt(scratch.path()) == test::treeAt(model.path())) << "seed " << seed;
    }
}

}  // namespace
}  // namespace corvane
