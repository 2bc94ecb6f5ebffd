#include "corvanectl/input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>

#include "platform/file_desc.h"
#include "support/scratch_directory.h"
#include "support/wait_until.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

int unread(int fd) {
    int bytes = 0;
    ::ioctl(fd, FIONREAD, &bytes);
    return bytes;
}

TEST(ReadInput, ReadsToTheEnd) {
    const test::ScratchDirectory scratch;
    std::string whole(200'000, 'x');
    whole += std::string("\0\1\r\n", 4);
    const FileDesc file(::open(scratch.file("f", whole).c_str(), O_RDONLY));
    EXPECT_EQ(readInput(file), whole);
    EXPECT_EQ(readInput(file), "");
}

TEST(ReadInput, FailsForADirectoryAndForNoDescriptor) {
    const FileDesc directory(::open("/", O_RDONLY));
    EXPECT_THROW(readInput(directory), Exception);
    EXPECT_THROW(readInput(-1), Exception);
}

TEST(ReadInput, WaitsForAPipeThatWasOpenedWithoutWaiting) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const FileDesc reading(ends[0]);
    ::fcntl(reading, F_SETFL, O_NONBLOCK);
    std::thread writer([end = ends[1], &reading] {
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(test::waitUntil([&reading] { return unread(reading) == 0; }));
            EXPECT_EQ(::write(end, "abc", 3), 3);
        }
        ::close(end);
    });
    EXPECT_EQ(readInput(reading), "abcabcabc");
    writer.join();
}

}  // namespace
}  // namespace corvane::ctl
