#include "cvnwinfo/process_guard.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace corvane::wintool {
namespace {

[[noreturn]] void waitForever() {
    for (;;) {
        pause();
    }
}

[[noreturn]] void exitWith(bool success) { _exit(success ? 0 : 1); }

[[noreturn]] void runTooLong() {
    limitRunningTime(std::chrono::milliseconds(20), "cvnwinfo: the X server does not answer\n");
    waitForever();
}

[[noreturn]] void runTooLongWithSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, nullptr);
    runTooLong();
}

[[noreturn]] void writeToABrokenPipe() {
    ignoreBrokenPipes();
    std::array<int, 2> ends = {};
    const bool made = pipe(ends.data()) == 0;
    close(ends[0]);
    exitWith(made && write(ends[1], "x", 1) == -1 && errno == EPIPE);
}

[[noreturn]] void startWithClosedDescriptors() {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    occupyStandardDescriptors();
    const bool taken = fcntl(STDIN_FILENO, F_GETFD) != -1;
    const bool refuses = write(STDOUT_FILENO, "x", 1) == -1 && errno == EBADF;
    exitWith(taken && refuses && open("/dev/null", O_RDONLY) > STDERR_FILENO);
}

[[noreturn]] void startWithOpenDescriptors() {
    occupyStandardDescriptors();
    exitWith(write(STDERR_FILENO, "still here", 10) == 10);
}

TEST(ProcessGuardDeathTest, EndsAProcessThatRunsTooLong) {
    EXPECT_EXIT(runTooLong(), testing::ExitedWithCode(1), "cvnwinfo: the X server does not answer");
}

TEST(ProcessGuardDeathTest, EndsAProcessThatWasStartedWithItsSignalsBlocked) {
    EXPECT_EXIT(runTooLongWithSignalsBlocked(), testing::ExitedWithCode(1), "does not answer");
}

TEST(ProcessGuardDeathTest, MakesABrokenPipeAnOrdinaryError) {
    EXPECT_EXIT(writeToABrokenPipe(), testing::ExitedWithCode(0), "");
}

TEST(ProcessGuardDeathTest, OccupiesClosedStandardDescriptors) {
    EXPECT_EXIT(startWithClosedDescriptors(), testing::ExitedWithCode(0), "");
}

TEST(ProcessGuardDeathTest, LeavesOpenStandardDescriptorsAlone) {
    EXPECT_EXIT(startWithOpenDescriptors(), testing::ExitedWithCode(0), "still here");
}

}  // namespace
}  // namespace corvane::wintool
