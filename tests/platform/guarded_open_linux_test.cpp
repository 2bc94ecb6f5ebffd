#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/guarded_open.h"
#include "platform/waiting.h"
#include "support/lease.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

class GuardedOpen : public testing::Test {
  protected:
    int errorOfOpening(const std::string& path, int flags) {
        errno = 0;
        return openGuarded(AT_FDCWD, path, flags).fd == -1 ? errno : 0;
    }

    test::ScratchDirectory scratch;
};

TEST_F(GuardedOpen, TellsWhatWasOpened) {
    const OpenedFile file = openGuarded(AT_FDCWD, scratch.file("f", "four"), O_RDONLY);
    ASSERT_NE(file.fd, -1);
    EXPECT_TRUE(S_ISREG(file.info.st_mode));
    EXPECT_EQ(file.info.st_size, 4);
    EXPECT_EQ(::fcntl(file.fd, F_GETFD), FD_CLOEXEC);
}

TEST_F(GuardedOpen, CreatesBelowADirectory) {
    const FileDesc directory(::open(scratch.path().c_str(), O_RDONLY | O_DIRECTORY));
    EXPECT_NE(openGuarded(directory, "new", O_WRONLY | O_CREAT, 0600).fd, -1);
    EXPECT_EQ(::access((scratch / "new").c_str(), R_OK | W_OK), 0);
}

TEST_F(GuardedOpen, KeepsTheErrorOfOpening) {
    EXPECT_EQ(errorOfOpening(scratch / "missing", O_RDONLY), ENOENT);
    EXPECT_EQ(errorOfOpening(scratch.path(), O_WRONLY), EISDIR);
}

TEST_F(GuardedOpen, DoesNotWaitForTheOtherEndOfAPipe) {
    const std::string pipe = scratch / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(errorOfOpening(pipe, O_WRONLY), ENXIO);
    EXPECT_EQ(errorOfOpening(pipe, O_RDONLY), 0);
}

TEST_F(GuardedOpen, WaitsUntilALeaseIsGivenBack) {
    const std::string path = scratch.file("leased", "text");
    for (const int flags : {O_RDONLY, O_WRONLY | O_CREAT, O_RDWR | O_TRUNC}) {
        const test::Lease lease(path);
        if (!lease.isGiven()) {
            GTEST_SKIP() << "no leases in " << scratch.path();
        }
        EXPECT_EQ(errorOfOpening(path, flags), 0);
        EXPECT_TRUE(lease.wasRequested());
    }
}

TEST_F(GuardedOpen, StopsWaitingForALeaseWhenTheProgramHasToStop) {
    const std::string path = scratch.file("leased");
    const test::Lease lease(path);
    if (!lease.isGiven()) {
        GTEST_SKIP() << "no leases in " << scratch.path();
    }
    static_cast<void>(std::signal(SIGIO, SIG_IGN));  // it is not given back
    EXPECT_EXIT(
        {
            requestStop();
            ::_exit(errorOfOpening(path, O_RDONLY));
        },
        testing::ExitedWithCode(EINTR), "");
}

}  // namespace
}  // namespace corvane
