// A device of which write(2) returns 0. Linux only: elsewhere the C library's function cannot be
// replaced by name.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "platform/file_desc.h"
#include "platform/io.h"

namespace corvane {
namespace {

int idleDevice = -1;
int attempts = 0;
constexpr int enoughAttempts = 3;

}  // namespace
}  // namespace corvane

// Takes the place of the C library's function in this program.
extern "C" ssize_t write(int fd, const void* bytes, std::size_t size) {
    if (fd != corvane::idleDevice || fd == -1) {
        return ::syscall(SYS_write, fd, bytes, size);
    }
    if (++corvane::attempts < corvane::enoughAttempts) {
        return 0;
    }
    errno = ENOSPC;  // so that a loop without an end fails
    return -1;
}

namespace corvane {
namespace {

TEST(IoWithAnIdleDevice, FailsInsteadOfTryingForEver) {
    const FileDesc device(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    idleDevice = device;
    EXPECT_FALSE(writeAll(device, "x"));
    EXPECT_EQ(errno, EIO);
    EXPECT_TRUE(writeAll(device, ""));
    idleDevice = -1;
    EXPECT_EQ(attempts, 1);
}

}  // namespace
}  // namespace corvane
