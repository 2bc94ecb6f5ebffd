// Files whose data is lost at the close, as over a quota or on a network file system. Linux only:
// close(2) is replaced by name.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/command_fixture.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// The file whose descriptors close with this error; empty for none.
std::string failingFile;
int closedWith = 0;

bool isFailing(int fd) {
    struct stat named {};
    struct stat open {};
    return !failingFile.empty() && ::stat(failingFile.c_str(), &named) == 0 &&
           ::fstat(fd, &open) == 0 && open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

}  // namespace
}  // namespace corvane

// Takes the place of the C library's function in this program. The descriptor is gone all the same.
extern "C" int close(int fd) {
    const bool fails = corvane::isFailing(fd);
    const auto result = static_cast<int>(::syscall(SYS_close, fd));
    if (!fails) {
        return result;
    }
    errno = corvane::closedWith;
    return -1;
}

namespace corvane {
namespace {

class FailingClose : public test::CommandTest {
  protected:
    ~FailingClose() override { failingFile.clear(); }

    std::string path = scratch / "file";
};

TEST_F(FailingClose, MakesAWriteFailAndRemovesTheFile) {
    for (const int error : {EDQUOT, EIO, ENOSPC}) {
        const std::string number = std::to_string(error);
        failingFile = path;
        closedWith = error;
        const std::string reply = ask("write", path + "\nhello");
        failingFile.clear();
        EXPECT_EQ(reply, test::replyText("write", "FAILED", " errno=\"" + number + "\"", ""));
        EXPECT_EQ(log.lines(),
                  (Lines{test::commandLine("DEBUG", "write", ": open file '" + path + "'"),
                         test::commandLine("DEBUG", "write",
                                           ": close (" + number + ") file '" + path + "'"),
                         test::commandLine(
                             "ERROR", "write",
                             ": fail (" + number + ") to write file '" + path + "' at byte 5")}));
        EXPECT_FALSE(fs::exists(path));
    }
}

TEST_F(FailingClose, CostsAReaderNothing) {
    scratch.file("file", "hello");
    failingFile = path;
    closedWith = EIO;
    EXPECT_EQ(ask("readText", path), test::success("readText", test::textDetail("hello")));
}

}  // namespace
}  // namespace corvane
