#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/thrown.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;

class MakeDirectory : public test::FilesTest {};

TEST_F(MakeDirectory, CreatesOneLevelOfADirectory) {
    EXPECT_TRUE(makeDirectory(scratch / "a"));
    EXPECT_TRUE(makeDirectory(scratch / "a/b/"));
    EXPECT_TRUE(fs::is_directory(scratch / "a/b"));
}

TEST_F(MakeDirectory, IsContentWithADirectoryThatExists) {
    EXPECT_FALSE(makeDirectory(scratch.directory("a")));
    fs::create_directory_symlink("a", scratch / "link");
    EXPECT_FALSE(makeDirectory(scratch / "link"));
}

TEST_F(MakeDirectory, GivesAllPermissionsThatTheMaskLeaves) {
    const mode_t previous = ::umask(022);
    makeDirectory(scratch / "a");
    ::umask(previous);
    EXPECT_EQ(fs::status(scratch / "a").permissions(), fs::perms(0755));
}

TEST_F(MakeDirectory, SaysWhyADirectoryCannotBeCreated) {
    const auto making = [](const std::string& path) {
        return thrownBy<IOException>([&] { makeDirectory(path); });
    };
    const std::string file = scratch.file("file");
    EXPECT_EQ(making(file), "makeDirectory '" + file + "' error (17)");
    EXPECT_EQ(making(scratch / "x/y"), "makeDirectory '" + (scratch / "x/y") + "' error (2)");
    EXPECT_EQ(making(file + "/y"), "makeDirectory '" + file + "/y' error (20)");
    EXPECT_EQ(making(""), "makeDirectory '' error (2)");
    EXPECT_EQ(making("/"), "makeDirectory '/' error (17)");
}

}  // namespace
}  // namespace corvane
