// Trees whose paths are far longer than the system accepts in one piece.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "fileutil/file_info.h"
#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "platform/file_desc.h"
#include "support/resource_limit.h"
#include "support/thrown.h"

namespace corvane {
namespace {

constexpr int levels = 1000;

class DeepTree : public test::FilesTest {
  protected:
    // Runs `visit` with the open directory of each level, from the top.
    template <typename Visit>
    void walk(const std::string& top, Visit visit) {
        FileDesc here(::open(top.c_str(), O_RDONLY | O_DIRECTORY));
        for (int level = 0; level < levels; ++level) {
            ASSERT_NE(here, -1) << "level " << level;
            visit(here, level);
            here = FileDesc(::openat(here, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
        }
    }

    void make(const std::string& top) {
        scratch.directory(top);
        walk(scratch / top, [this](int here, int level) {
            ASSERT_EQ(::mkdirat(here, name.c_str(), 0777), 0);
            const FileDesc file(::openat(here, "file", O_WRONLY | O_CREAT, 0666));
            const std::string text = std::to_string(level);
            ASSERT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        });
    }
    // Long, with a blank and bytes that are no UTF-8.
    std::string name = std::string(200, 'n') + " \xFF\n";
};

TEST_F(DeepTree, IsCopiedListedAndRemoved) {
    make("src");
    scratch.directory("dst");
    copyDirectory(scratch / "src", scratch / "dst", nullptr);
    int seen = 0;
    walk(scratch / "dst", [&seen](int here, int level) {
        const FileDesc file(::openat(here, "file", O_RDONLY));
        std::string text(16, '\0');
        text.resize(static_cast<std::size_t>(::read(file, text.data(), text.size())));
        ASSERT_EQ(text, std::to_string(level));
        ++seen;
    });
    EXPECT_EQ(seen, levels);
    EXPECT_EQ(scanDirectory(scratch / "dst").size(), 4U);  // with "." and ".."

    EXPECT_EQ(test::thrownBy<IOException>([&] { renameFile(scratch / "src", scratch / "moved"); }),
              test::withCode("remove directory '" + (scratch / "src") + "' error", ENOTEMPTY));

    for (const char* tree : {"src", "dst", "moved"}) {
        removeDirectory(scratch / tree, true);
    }
    EXPECT_EQ(scanDirectory(scratch.path()).size(), 2U);
}

TEST_F(DeepTree, NeedsOnlyAFewDescriptors) {
    make("src");
    scratch.directory("dst");
    const test::ResourceLimit few(RLIMIT_NOFILE, 200);
    EXPECT_NO_THROW(copyDirectory(scratch / "src", scratch / "dst", nullptr));
    EXPECT_NO_THROW(removeDirectory(scratch / "src", true));
    EXPECT_NO_THROW(removeDirectory(scratch / "dst", true));
}

TEST_F(DeepTree, RefusesACopyIntoItsOwnDepth) {
    make("src");
    EXPECT_EQ(test::thrownBy<IOException>(
                  [&] { copyDirectory(scratch / "src", scratch / "src/" + name, nullptr); }),
              "cannot copy directory '" + (scratch / "src/") + "' into itself as '" +
                  (scratch / "src/") + name + "/' (22)");
    removeDirectory(scratch / "src", true);
}

}  // namespace
}  // namespace corvane
