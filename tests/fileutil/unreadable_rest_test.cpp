// Directories of which the system cannot tell all entries. Linux only: elsewhere the C library's
// function cannot be replaced by name.
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "fileutil/file_info.h"
#include "fileutil/file_operations.h"
#include "support/scratch_directory.h"
#include "support/thrown.h"

namespace corvane {
namespace {

/// The entries that the next directories show before an error; negative for all.
int entriesLeft = -1;

}  // namespace
}  // namespace corvane

// Takes the place of the C library's function in this program.
extern "C" dirent* readdir(DIR* directory) {
    static const auto next = reinterpret_cast<decltype(&readdir)>(::dlsym(RTLD_NEXT, "readdir"));
    if (corvane::entriesLeft == 0) {
        errno = EIO;
        return nullptr;
    }
    if (corvane::entriesLeft > 0) {
        --corvane::entriesLeft;
    }
    return next(directory);
}

namespace corvane {
namespace {

class UnreadableRest : public testing::Test {
  protected:
    UnreadableRest() {
        scratch.file("d/a");
        scratch.file("d/b");
        scratch.directory("dst");
    }
    ~UnreadableRest() override { entriesLeft = -1; }

    template <typename Work>
    std::string thrownAfter(int entries, Work work) {
        entriesLeft = entries;
        std::string message = test::thrownBy<IOException>(work);
        entriesLeft = -1;
        return message;
    }

    test::ScratchDirectory scratch;
};

TEST_F(UnreadableRest, IsLeftOutOfAListing) {
    for (int entries = 0; entries < 4; ++entries) {
        EXPECT_EQ(thrownAfter(entries,
                              [&] {
                                  EXPECT_EQ(scanDirectory(scratch / "d").size(),
                                            static_cast<std::size_t>(entries));
                              }),
                  "nothing was thrown");
    }
}

TEST_F(UnreadableRest, EndsACopyAndARemoval) {
    const std::string message = test::withCode("readdir error", EIO);
    EXPECT_EQ(thrownAfter(3, [&] { copyDirectory(scratch / "d", scratch / "dst", nullptr); }),
              message);
    EXPECT_EQ(thrownAfter(3, [&] { removeDirectory(scratch / "d", true); }), message);
    EXPECT_TRUE(std::filesystem::exists(scratch / "d/a"));
    EXPECT_TRUE(std::filesystem::exists(scratch / "d/b"));
}

}  // namespace
}  // namespace corvane
