#include "corvane-play/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "support/scratch_directory.h"
#include "text/exception.h"

namespace corvane::play {
namespace {

namespace fs = std::filesystem;

class FilesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(root / "sub");
        std::ofstream(root / "sub" / "file.txt") << "text";
        std::ofstream(root.parent_path() / "secret") << "secret";
    }
    bool opens(const std::vector<std::string>& components) const {
        return Files(root).open(components).fd != -1;
    }

    test::ScratchDirectory scratch;
    fs::path root = fs::path(scratch.path()) / "root";
};

TEST_F(FilesTest, OpensAFileAndTellsItsSize) {
    EXPECT_EQ(Files(root).open({"sub", "file.txt"}).size, 4U);
}

TEST_F(FilesTest, OpensNothingButRegularFiles) {
    ASSERT_EQ(::mkfifo((root / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(opens({"pipe"}));
    EXPECT_FALSE(opens({"sub"}));
    EXPECT_FALSE(opens({}));
    EXPECT_FALSE(opens({""}));
    EXPECT_FALSE(opens({"missing"}));
    EXPECT_FALSE(opens({"sub", "file.txt", "x"}));
}

TEST_F(FilesTest, FollowsNoLinkInAnyPlace) {
    fs::create_symlink("../secret", root / "out");
    fs::create_symlink("sub/file.txt", root / "in");
    fs::create_directory_symlink("..", root / "up");
    fs::create_directory_symlink("sub", root / "again");
    EXPECT_FALSE(opens({"out"}));
    EXPECT_FALSE(opens({"in"}));
    EXPECT_FALSE(opens({"up", "secret"}));
    EXPECT_FALSE(opens({"again", "file.txt"}));
}

TEST_F(FilesTest, StaysInADirectoryThatIsRenamed) {
    const Files files(root);
    fs::rename(root, root.string() + ".old");
    EXPECT_NE(files.open({"sub", "file.txt"}).fd, -1);
}

TEST_F(FilesTest, TellsThatThereIsNoSuchDirectory) {
    EXPECT_THROW(Files(root / "missing"), FileNotFoundException);
}

TEST(MimeTypeTest, GoesByTheEndingOfTheName) {
    EXPECT_EQ(mimeType("a.SWF"), "application/x-shockwave-flash");
    EXPECT_EQ(mimeType("a.b.wasm"), "application/wasm");
    EXPECT_EQ(mimeType("a.exe"), "application/octet-stream");
    EXPECT_EQ(mimeType("swf"), "application/octet-stream");
}

}  // namespace
}  // namespace corvane::play
