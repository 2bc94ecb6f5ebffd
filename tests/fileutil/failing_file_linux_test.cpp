// Files that can be opened, but not read, or whose last bytes the system cannot keep, as on a disk
// of a file server. Linux only: elsewhere the C library's functions cannot be replaced by name.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "support/thrown.h"
#include "support/tree.h"

namespace corvane {
namespace {

/// The files that cannot be read, and whose closing fails; empty for none.
std::string unreadable;
std::string unclosable;

bool isOpenAs(int fd, const std::string& path) {
    std::error_code ignored;
    return !path.empty() &&
           std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), ignored) == path;
}

}  // namespace
}  // namespace corvane

// These take the place of the C library's functions in this program.
extern "C" ssize_t read(int fd, void* buffer, size_t size) {
    static const auto next = reinterpret_cast<decltype(&read)>(::dlsym(RTLD_NEXT, "read"));
    if (corvane::isOpenAs(fd, corvane::unreadable)) {
        errno = EIO;
        return -1;
    }
    return next(fd, buffer, size);
}

extern "C" int close(int fd) {
    static const auto next = reinterpret_cast<decltype(&close)>(::dlsym(RTLD_NEXT, "close"));
    const bool fails = corvane::isOpenAs(fd, corvane::unclosable);
    const int result = next(fd);
    if (fails) {
        errno = EDQUOT;
    }
    return fails ? -1 : result;
}

namespace corvane {
namespace {

using test::thrownBy;
using test::Tree;
using test::treeAt;
using test::withCode;

class FailingFile : public test::FilesTest {
  protected:
    FailingFile() : src(scratch.file("src", "data")) {}
    ~FailingFile() override {
        unreadable.clear();
        unclosable.clear();
    }

    std::string src;
    std::string dst = scratch / "dst";
};

TEST_F(FailingFile, IsNoCopyWhenItsLastBytesAreLost) {
    unclosable = dst;
    EXPECT_EQ(thrownBy<IOException>([&] { copyFile(src, dst); }),
              withCode("write dst file '" + dst + "' error", EDQUOT));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:data"}}));
}

TEST_F(FailingFile, DoesNotTakeThePlaceOfTheFileThatIsMoved) {
    unclosable = dst;
    EXPECT_EQ(thrownBy<IOException>([&] { renameFile(src, dst); }),
              withCode("write dst file '" + dst + "' error", EDQUOT));
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:data"}}));
}

TEST_F(FailingFile, IsNamedAsTheOneThatCannotBeRead) {
    unreadable = src;
    const std::string message = withCode("read src file '" + src + "' error", EIO);
    EXPECT_EQ(thrownBy<IOException>([&] { copyFile(src, dst); }), message);
    EXPECT_EQ(thrownBy<IOException>([&] { renameFile(src, dst); }), message);
    unreadable.clear();
    EXPECT_EQ(treeAt(scratch.path()), (Tree{{"src", "file:data"}}));
}

}  // namespace
}  // namespace corvane
