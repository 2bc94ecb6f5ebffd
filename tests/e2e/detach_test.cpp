// What the start prints, wherever standard output leads, and what becomes of the standard
// descriptors, in the foreground and detached from the terminal.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "e2e/server_test.h"

namespace corvane::test {
namespace {

constexpr const char* failure =
    "Initializing app\ncorvane init error:\nInvalid priority (LOUD) in logging configuration file "
    "for category: root\n";

/// Everything that can be read from `fd` until all its writers are gone.
std::string readAll(int fd) {
    std::string text;
    std::array<char, 4096> chunk{};
    ssize_t count = 0;
    while ((count = ::read(fd, chunk.data(), chunk.size())) > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
    ::close(fd);
    return text;
}

std::string linkOf(const ServerProcess& server, int fd) {
    return std::filesystem::read_symlink("/proc/" + std::to_string(server.pid()) + "/fd/" +
                                         std::to_string(fd));
}

class DetachTest : public ServerTest {
  protected:
    /// What a start with this configuration writes into a pipe.
    std::string printedIntoPipe(const std::string& configuration) {
        std::array<int, 2> pipe{};
        EXPECT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
        startWith({.configuration = configuration, .standardOutput = pipe[1]});
        ::close(pipe[1]);
        return readAll(pipe[0]);
    }

    std::string printedOnTerminal(const std::string& configuration) {
        const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::grantpt(master);
        ::unlockpt(master);
        const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
        startWith({.configuration = configuration, .standardOutput = terminal});
        ::close(terminal);
        std::string text = readAll(master);
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }
};

TEST_F(DetachTest, PrintsAFailureOnceIntoAFile) {
    start("log4cpp.priority=LOUD\n");
    EXPECT_EQ(server().wait(), 255);
    EXPECT_EQ(server().output(), failure);
}

TEST_F(DetachTest, PrintsAFailureOnceIntoAPipe) {
    EXPECT_EQ(printedIntoPipe("log4cpp.priority=LOUD\n"), failure);
    EXPECT_EQ(server().wait(), 255);
}

TEST_F(DetachTest, PrintsAFailureOnceOnATerminal) {
    EXPECT_EQ(printedOnTerminal("log4cpp.priority=LOUD\n"), failure);
    EXPECT_EQ(server().wait(), 255);
}

TEST_F(DetachTest, PrintsThatTheConsoleIsOffOnceIntoAFile) {
    start("CONSOLE=false\n");
    EXPECT_EQ(server().followDetached(), 0);
    EXPECT_EQ(server().output(), "Initializing app\nConsole is off\n");
    EXPECT_EQ(server().errors(), "");
}

TEST_F(DetachTest, PrintsThatTheConsoleIsOffOnceIntoAPipeAndLetsGoOfIt) {
    EXPECT_EQ(printedIntoPipe("CONSOLE=false\n"), "Initializing app\nConsole is off\n");
    EXPECT_EQ(server().followDetached(), 0);
}

TEST_F(DetachTest, PrintsThatTheConsoleIsOffOnceOnATerminal) {
    EXPECT_EQ(printedOnTerminal("CONSOLE=false\n"), "Initializing app\nConsole is off\n");
    EXPECT_EQ(server().followDetached(), 0);
}

TEST_F(DetachTest, TellsWhyItCannotStartBeforeIt) {
    start("CONSOLE=false\nlog4cpp.priority=LOUD\n");
    EXPECT_EQ(server().wait(), 255);
    EXPECT_EQ(server().output(),
              "Initializing app\nConsole is off\ncorvane init error:\nInvalid priority (LOUD) in "
              "logging configuration file for category: root\n");
}

TEST_F(DetachTest, ServesWithTheNullDeviceInPlaceOfTheStandardDescriptors) {
    start("CONSOLE=false\n");
    server().followDetached();
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        EXPECT_EQ(linkOf(server(), fd), "/dev/null");
    }
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
}

TEST_F(DetachTest, LeavesTheSessionAndLeadsNone) {
    start("CONSOLE=false\n");
    server().followDetached();
    EXPECT_NE(::getsid(server().pid()), ::getsid(0));
    EXPECT_NE(::getsid(server().pid()), server().pid());
}

TEST_F(DetachTest, StopsLikeAServerInTheForeground) {
    start("CONSOLE=false\n");
    server().followDetached();
    server().connect().send(std::string("shutdown\0", 9));
    EXPECT_EQ(server().wait(), 0);
    EXPECT_EQ(server().logLines().back(), "NOTICE corvane application terminated");
}

TEST_F(DetachTest, ServesWhenItsStandardDescriptorsAreClosedAtTheStart) {
    startWith({.prepare = [] {
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::close(fd);
        }
    }});
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        EXPECT_EQ(linkOf(server(), fd), "/dev/null");
    }
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
}

}  // namespace
}  // namespace corvane::test
