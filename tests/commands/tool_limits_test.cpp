// Running the window tool at its limits: of time, of what it may print and of descriptors.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "commands/wndutil.h"
#include "platform/descriptor_limit.h"
#include "platform/file_desc.h"
#include "support/held_signals.h"
#include "support/resource_limit.h"
#include "support/signal_action.h"
#include "support/tool_run.h"

namespace corvane {
namespace {

using ToolLimits = test::ToolRun;

TEST_F(ToolLimits, StopsAToolThatPrintsWithoutEnd) {
    tool("exec tr '\\0' o < /dev/zero");
    EXPECT_EQ(runFailing(), "Program has written more than 65536 bytes");
    tool("exec tr '\\0' e < /dev/zero >&2");
    EXPECT_EQ(runFailing(), "Program has written more than 65536 bytes");
    tool("head -c 65537 /dev/zero");
    EXPECT_EQ(runFailing(), "Program has written more than 65536 bytes");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(ToolLimits, WaitsForABackgroundProcessOnlyUntilTheTimeout) {
    tool("read line < '" + silentPipe() + "' &\nprintf early");
    wndutil::setToolTimeout(1);
    EXPECT_EQ(run(), "early");
}

TEST_F(ToolLimits, KillsWhatTheToolHasStartedAtTheTimeout) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);  // open as long as one of the processes lives
    const FileDesc readEnd(ends[0]);
    FileDesc writeEnd(ends[1]);
    const std::string silent = silentPipe();
    wndutil::setToolTimeout(1);
    tool("(read line < '" + silent + "'; read line < '" + silent + "') &\nread line < '" + silent +
         "'");
    runFailing();
    tool("read line < '" + silent + "' &\nprintf early");
    EXPECT_EQ(run(), "early");
    writeEnd.close();
    pollfd end{readEnd, POLLHUP, 0};
    EXPECT_EQ(::poll(&end, 1, 10'000), 1) << "something still runs";
}

TEST_F(ToolLimits, KillsWhatTheToolHasStartedWhenThatPrintsTooMuch) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);  // open as long as one of the processes lives
    const FileDesc readEnd(ends[0]);
    FileDesc writeEnd(ends[1]);
    // It prints once the tool has ended and its status has been collected.
    tool("(while kill -0 $$; do :; done 2> /dev/null; head -c 70000 /dev/zero; read line < '" +
         silentPipe() + "') &");
    EXPECT_EQ(runFailing(), "Program has written more than 65536 bytes");
    writeEnd.close();
    pollfd end{readEnd, POLLHUP, 0};
    EXPECT_EQ(::poll(&end, 1, 10'000), 1) << "something still runs";
}

TEST_F(ToolLimits, KillsAToolThatHangsAtTheTimeout) {
    tool("printf 'so far' >&2\nread line < '" + silentPipe() + "'");
    wndutil::setToolTimeout(1);
    EXPECT_EQ(runFailing(),
              "Program has exited in unusual way (9) with message: <so far> [" + toolPath + "])");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(ToolLimits, KillsASilentToolWhenTheProgramHasToStop) {
    tool("read line < '" + silentPipe() + "'");
    EXPECT_TRUE(inChild([this] {
        requestStop();
        return runFailing() ==
               "Program has exited in unusual way (9) with message: <> [" + toolPath + "])";
    }));
}

TEST_F(ToolLimits, KillsAToolThatHangsWhenATerminationSignalArrives) {
    tool("printf 'so far' >&2\nkill -TERM $PPID\nread line < '" + silentPipe() + "'");
    EXPECT_TRUE(inChild([this] {
        const test::SignalAction stop(SIGTERM, [](int) { requestStop(); });
        const HeldSignals signals;
        return runFailing() ==
               "Program has exited in unusual way (9) with message: <so far> [" + toolPath + "])";
    }));
}

TEST_F(ToolLimits, LeavesNoDescriptorOpenWhateverHappens) {
    const int before = test::nextDescriptor();
    tool("printf ok");
    run();
    tool("exit 1");
    runFailing();
    std::filesystem::remove(toolPath);
    runFailing();
    EXPECT_EQ(test::nextDescriptor(), before);
}

TEST_F(ToolLimits, FailsWithoutDescriptorsForItsPipes) {
    tool("printf ok");
    const int next = test::nextDescriptor();
    for (const int free : {0, 1, 2, 3}) {
        const test::DescriptorLimit descriptors(next + free);
        EXPECT_EQ(runFailing(), "pipe() fail (24)") << free;
    }
    EXPECT_EQ(run(), "ok");
}

// select() has no place for such a descriptor.
TEST_F(ToolLimits, RefusesDescriptorsThatCannotBeWaitedFor) {
    rlimit limits{};
    ::getrlimit(RLIMIT_NOFILE, &limits);
    if (limits.rlim_max < FD_SETSIZE + 64) {
        GTEST_SKIP() << "the number of descriptors cannot be raised far enough";
    }
    tool("printf ok");
    const test::ResourceLimit many(RLIMIT_NOFILE, FD_SETSIZE + 64);
    std::vector<FileDesc> used;
    do {
        used.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    } while (used.back() < FD_SETSIZE);
    EXPECT_EQ(runFailing(), "pipe() fail (24)");
    used.clear();
    EXPECT_EQ(run(), "ok");
}

TEST_F(ToolLimits, GivesTheToolTheLimitOfDescriptorsThatTheServerWasStartedWith) {
    tool("ulimit -Sn");
    EXPECT_TRUE(inChild([this] {  // the limit is raised once in the life of a process
        const test::ResourceLimit low(RLIMIT_NOFILE, 100);
        raiseDescriptorLimit();
        return run() == "100\n";
    }));
}

TEST_F(ToolLimits, WorksWithoutStandardStreams) {
    // The tool sees where the program keeps its pipes: not in the place of a standard stream.
    tool("for fd in 0 1 2; do readlink \"/proc/$PPID/fd/$fd\"; done\nprintf '1,2'");
    EXPECT_TRUE(inChild([this] {
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::close(fd);
        }
        return run() == "1,2" && ::fcntl(STDIN_FILENO, F_GETFD) == -1 &&
               ::fcntl(STDERR_FILENO, F_GETFD) == -1;
    }));
    tool("printf errors >&2; exit 7");
    EXPECT_TRUE(inChild([this] {
        ::close(STDIN_FILENO);
        ::close(STDERR_FILENO);
        return runFailing() == "Program error: <errors> [" + toolPath + "]) (7)";
    }));
}

TEST_F(ToolLimits, ReadsAsMuchAsAPipeHolds) {
    tool("head -c 65536 /dev/zero | tr '\\0' o\nhead -c 65536 /dev/zero | tr '\\0' e >&2");
    EXPECT_TRUE(run() == std::string(65536, 'o'));
    tool("head -c 65536 /dev/zero | tr '\\0' e >&2\nhead -c 65536 /dev/zero\nexit 1");
    EXPECT_TRUE(runFailing() ==
                "Program error: <" + std::string(65536, 'e') + "> [" + toolPath + "]) (1)");
}

}  // namespace
}  // namespace corvane
