#include "fileutil/copy_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "platform/file_desc.h"
#include "support/resource_limit.h"
#include "support/thrown.h"
#include "support/tree.h"
#include "support/unix_socket.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;
using test::withCode;

std::string patterned(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(i * 7 + i / 251);
    }
    return text;
}

class CopyFile : public test::FilesTest {
  protected:
    std::string copying(const std::string& src, const std::string& dst) {
        return thrownBy<IOException>([&] { copyFile(src, dst); });
    }
};

TEST_F(CopyFile, CopiesFilesOfAllSizes) {
    for (const std::size_t size :
         {0U, 1U, 4095U, 4096U, 4097U, 65536U, 65537U, 131072U, 131073U, 3'000'000U}) {
        const std::string bytes = patterned(size);
        scratch.file("src", bytes);
        fs::remove(scratch / "dst");
        copyFile(scratch / "src", scratch / "dst");
        EXPECT_TRUE(test::readFile(scratch / "dst") == bytes) << size;
    }
}

TEST_F(CopyFile, KeepsTheTailOfALongerTarget) {
    scratch.file("src", "0123456789");
    scratch.file("dst", "abcdefghijklmnopqrst");
    copyFile(scratch / "src", scratch / "dst");
    EXPECT_EQ(test::readFile(scratch / "dst"), "0123456789klmnopqrst");
}

TEST_F(CopyFile, KeepsTheTailOfALongerTargetAlsoForLargeFiles) {
    const std::string bytes = patterned(200'000);
    scratch.file("src", bytes);
    scratch.file("dst", std::string(300'000, 'x'));
    copyFile(scratch / "src", scratch / "dst");
    EXPECT_TRUE(test::readFile(scratch / "dst") == bytes + std::string(100'000, 'x'));
}

TEST_F(CopyFile, GoesIntoADirectoryUnderTheSourcesName) {
    scratch.file("a/src.txt", "x");
    scratch.directory("d");
    copyFile(scratch / "a/src.txt", scratch / "d");
    EXPECT_EQ(test::readFile(scratch / "d/src.txt"), "x");
    scratch.file("a/src.txt", "y");
    copyFile(scratch / "a/src.txt", scratch / "d/");
    EXPECT_EQ(test::readFile(scratch / "d/src.txt"), "y");
}

TEST_F(CopyFile, CarriesNeitherPermissionsNorTimes) {
    const std::string src = scratch.file("src", "x");
    ASSERT_EQ(::chmod(src.c_str(), 0600), 0);
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(48);
    fs::last_write_time(src, old);
    const mode_t previous = ::umask(027);
    copyFile(src, scratch / "dst");
    ::umask(previous);
    EXPECT_EQ(fs::status(scratch / "dst").permissions(), fs::perms(0750));
    EXPECT_GT(fs::last_write_time(scratch / "dst"), old + std::chrono::hours(24));
}

TEST_F(CopyFile, LeavesPermissionsOfAnExistingTarget) {
    scratch.file("src", "x");
    ASSERT_EQ(::chmod(scratch.file("dst").c_str(), 0604), 0);
    copyFile(scratch / "src", scratch / "dst");
    EXPECT_EQ(fs::status(scratch / "dst").permissions(), fs::perms(0604));
}

TEST_F(CopyFile, FollowsLinksOnBothSides) {
    scratch.file("src", "new");
    scratch.file("target", "old");
    fs::create_symlink("src", scratch / "from");
    fs::create_symlink("target", scratch / "to");
    copyFile(scratch / "from", scratch / "to");
    EXPECT_EQ(test::readFile(scratch / "target"), "new");
    EXPECT_TRUE(fs::is_symlink(scratch / "to"));
}

TEST_F(CopyFile, LeavesAFileThatIsCopiedOntoItself) {
    const std::string src = scratch.file("src", "kept");
    fs::create_hard_link(src, scratch / "hard");
    fs::create_symlink("src", scratch / "soft");
    for (const std::string& dst :
         {src, scratch / "./src", scratch.path(), scratch / "hard", scratch / "soft",
          scratch / "../" + fs::path(scratch.path()).parent_path().filename().string() + "/src"}) {
        EXPECT_EQ(copying(src, dst), "nothing was thrown") << dst;
        EXPECT_EQ(test::readFile(src), "kept") << dst;
    }
}

TEST_F(CopyFile, SaysWhyTheSourceCannotBeOpened) {
    EXPECT_EQ(copying(scratch / "missing", scratch / "dst"),
              "open src file '" + (scratch / "missing") + "' error (2)");
    EXPECT_FALSE(fs::exists(scratch / "dst"));
    EXPECT_EQ(copying("", scratch / "dst"), "open src file '' error (2)");
}

TEST_F(CopyFile, NamesTheCompletedTargetThatCannotBeOpened) {
    const std::string src = scratch.file("src", "x");
    EXPECT_EQ(copying(src, scratch / "no/dst"),
              "open dst file '" + (scratch / "no/dst") + "' error (2)");
    scratch.directory("d/src");
    EXPECT_EQ(copying(src, scratch / "d"),
              withCode("open dst file '" + (scratch / "d/src") + "' error", EISDIR));
    EXPECT_EQ(copying(src, ""), "open dst file '' error (2)");
}

TEST_F(CopyFile, FailsToReadADirectoryAndLeavesTheTargetAsItIs) {
    for (const std::string& src : {scratch.directory("src"), std::string("/")}) {
        const std::string message = withCode("read src file '" + src + "' error", EISDIR);
        fs::remove(scratch / "dst");
        EXPECT_EQ(copying(src, scratch / "dst"), message);
        EXPECT_FALSE(fs::exists(scratch / "dst"));
        scratch.file("dst", "kept");
        EXPECT_EQ(copying(src, scratch / "dst"), message);
        EXPECT_EQ(test::readFile(scratch / "dst"), "kept");
    }
}

TEST_F(CopyFile, RefusesPipesSocketsAndDevicesAsASource) {
    const test::WorkingDirectory inside(scratch.path());
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(copying("pipe", "dst"), "open src file 'pipe' error (22)");
    EXPECT_EQ(copying("/dev/zero", "dst"), "open src file '/dev/zero' error (22)");
    const FileDesc sock = test::unixSocketAt("socket");
    EXPECT_EQ(copying("socket", "dst"), withCode("open src file 'socket' error", ENXIO));
    EXPECT_FALSE(fs::exists("dst"));
}

TEST_F(CopyFile, RefusesPipesAndSocketsAsATarget) {
    const test::WorkingDirectory inside(scratch.path());
    scratch.file("src", "x");
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(copying("src", "pipe"), withCode("open dst file 'pipe' error", ENXIO));
    const FileDesc reader(::open("pipe", O_RDONLY | O_NONBLOCK));
    EXPECT_EQ(copying("src", "pipe"), "open dst file 'pipe' error (22)");
    const FileDesc sock = test::unixSocketAt("socket");
    EXPECT_EQ(copying("src", "socket"), withCode("open dst file 'socket' error", ENXIO));
    EXPECT_TRUE(fs::exists("pipe"));
    EXPECT_TRUE(fs::exists("socket"));
}

TEST_F(CopyFile, WritesToADeviceAndNeverRemovesIt) {
    scratch.file("src", "x");
    EXPECT_EQ(copying(scratch / "src", "/dev/null"), "nothing was thrown");
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    fs::create_symlink("/dev/full", scratch / "full");
    EXPECT_EQ(copying(scratch / "src", scratch / "full"),
              withCode("write dst file '" + (scratch / "full") + "' error", ENOSPC));
    EXPECT_TRUE(fs::exists(scratch / "full"));
    EXPECT_TRUE(fs::exists("/dev/full"));
}

TEST_F(CopyFile, RemovesTheTargetWhenTheDiskIsFull) {
    for (const std::size_t size : {1500U, 100'000U, 1'000'000U}) {
        const std::string src = scratch.file("src", patterned(size));
        const test::FileSizeLimit full(1000);
        EXPECT_EQ(copying(src, scratch / "dst"),
                  withCode("write dst file '" + (scratch / "dst") + "' error", EFBIG))
            << size;
        EXPECT_FALSE(fs::exists(scratch / "dst")) << size;
        EXPECT_EQ(fs::file_size(src), size);
    }
}

TEST_F(CopyFile, FillsTheDiskToTheLastByte) {
    for (const std::size_t size : {1000U, 100'000U}) {
        const std::string src = scratch.file("src", patterned(size));
        const test::FileSizeLimit full(size);
        EXPECT_EQ(copying(src, scratch / "dst"), "nothing was thrown");
        EXPECT_TRUE(test::readFile(scratch / "dst") == patterned(size));
    }
}

TEST_F(CopyFile, LeavesNoDescriptorOpenWhateverHappens) {
    scratch.file("src", "x");
    const int before = test::nextDescriptor();
    copyFile(scratch / "src", scratch / "dst");
    copying(scratch / "src", scratch / "no/dst");
    copying(scratch.path(), scratch / "dst2");
    const int after = test::nextDescriptor();
    EXPECT_EQ(after, before);
}

TEST(SameFile, HasTheSameNumberOnTheSameDisk) {
    struct stat file {};
    file.st_dev = 1;
    file.st_ino = 2;
    struct stat other = file;
    EXPECT_TRUE(isSameFile(file, other));
    other.st_ino = 3;
    EXPECT_FALSE(isSameFile(file, other));
    other = file;
    other.st_dev = 3;
    EXPECT_FALSE(isSameFile(file, other));
}

}  // namespace
}  // namespace corvane
