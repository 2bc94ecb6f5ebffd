// A page whose bytes do not reach the disk, which a file system may tell at its closing only. Linux
// only: it takes the place of close(2), and looks at /proc.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "launch/movie_page.h"
#include "support/scratch_directory.h"
#include "support/thrown.h"

namespace {

/// Whether closing a page fails.
bool pagesAreLost = false;

bool isPage(int fd) {
    std::error_code none;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), none).extension() ==
           ".html";
}

}  // namespace

// Takes the place of the C library's function in this program.
extern "C" int close(int fd) {
    const bool fails = pagesAreLost && isPage(fd);
    const auto result = static_cast<int>(::syscall(SYS_close, fd));
    if (fails) {
        errno = EDQUOT;
        return -1;
    }
    return result;
}

namespace corvane {
namespace {

TEST(LostPage, IsReportedAndRemoved) {
    const test::ScratchDirectory scratch;
    const std::string movie = scratch.file("movie.swf");
    pagesAreLost = true;
    const std::string message =
        test::thrownBy<IOException>([&] { std::filesystem::remove(convertSWF(movie.c_str())); });
    pagesAreLost = false;
    const std::size_t quote = message.find('\'');
    const std::string page = message.substr(quote + 1, message.rfind('\'') - quote - 1);
    EXPECT_EQ(message, test::withCode("cannot write page '" + page + "'", EDQUOT));
    EXPECT_FALSE(std::filesystem::exists(page));
}

}  // namespace
}  // namespace corvane
