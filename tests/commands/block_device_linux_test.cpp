// A disk that is written to like a file. No test may have one, so that fstat(2) tells of one where
// there is a file. Linux only.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/command_fixture.h"

namespace corvane {
namespace {

bool isFileADisk = false;

}  // namespace
}  // namespace corvane

// Takes the place of the C library's function in this program.
extern "C" int fstat(int fd, struct stat* info) {
    const int result = ::fstatat(fd, "", info, AT_EMPTY_PATH);
    if (result == 0 && corvane::isFileADisk && S_ISREG(info->st_mode)) {
        info->st_mode = S_IFBLK | (info->st_mode & ~static_cast<mode_t>(S_IFMT));
    }
    return result;
}

namespace corvane {
namespace {

using BlockDevice = test::CommandTest;

TEST_F(BlockDevice, IsNeitherReadNorWritten) {
    const std::string disk = scratch / "disk";
    isFileADisk = true;
    const std::string written = ask("write", disk + "\ncontents");
    const std::string read = ask("readText", disk);
    isFileADisk = false;
    EXPECT_EQ(written,
              test::replyText("write", "FAILED", " errno=\"" + std::to_string(EINVAL) + "\"", ""));
    EXPECT_EQ(read, test::failure("readText"));
    EXPECT_EQ(std::filesystem::file_size(disk), 0U);
}

}  // namespace
}  // namespace corvane
