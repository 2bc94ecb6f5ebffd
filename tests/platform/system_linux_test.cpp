#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>

#include "platform/file_desc.h"
#include "platform/system.h"
#include "support/environment.h"
#include "support/sanitized.h"
#include "support/scratch_directory.h"
#include "support/signal_action.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

// A listener on a free port of the loopback address, and connections to it.
class Connections : public ::testing::Test {
  protected:
    Connections() : listener(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(listener, generic, length), 0);
        EXPECT_EQ(::listen(listener, 4), 0);
        EXPECT_EQ(::getsockname(listener, generic, &length), 0);
    }

    FileDesc connect() const {
        FileDesc client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(::connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  0);
        return client;
    }

    FileDesc listener;
    sockaddr_in address{};
    sockaddr_in peer{};
};

TEST_F(Connections, AreAcceptedNonBlockingAndCloseOnExec) {
    const FileDesc client = connect();
    const FileDesc accepted(platform::acceptConnection(listener, peer));
    ASSERT_NE(accepted, -1);
    EXPECT_EQ(::fcntl(accepted, F_GETFL) & O_NONBLOCK, O_NONBLOCK);
    EXPECT_EQ(::fcntl(accepted, F_GETFD), FD_CLOEXEC);
    sockaddr_in own{};
    socklen_t length = sizeof own;
    ASSERT_EQ(::getsockname(client, reinterpret_cast<sockaddr*>(&own), &length), 0);
    EXPECT_EQ(peer.sin_port, own.sin_port);
    EXPECT_EQ(peer.sin_addr.s_addr, own.sin_addr.s_addr);
}

TEST_F(Connections, AreNotWaitedFor) {
    peer.sin_family = AF_INET;
    EXPECT_EQ(platform::acceptConnection(listener, peer), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(peer.sin_family, AF_UNSPEC) << "nothing is left of an earlier peer";
}

TEST_F(Connections, UseTheSimplestCongestionControlThatTheirListenerAsksFor) {
    platform::simplifyCongestionControl(listener);
    const FileDesc client = connect();
    const FileDesc accepted(platform::acceptConnection(listener, peer));
    std::array<char, 16> name{};
    socklen_t length = name.size();
    ASSERT_EQ(::getsockopt(accepted, IPPROTO_TCP, TCP_CONGESTION, name.data(), &length), 0);
    EXPECT_STREQ(name.data(), "reno");
}

TEST_F(Connections, RaiseNoSignalWhenThePeerIsGone) {
    FileDesc client = connect();
    const FileDesc accepted(platform::acceptConnection(listener, peer));
    ASSERT_EQ(::shutdown(accepted, SHUT_WR), 0);
    const test::SignalAction pipe(SIGPIPE, SIG_DFL);
    EXPECT_EQ(::send(accepted, "x", 1, platform::sendFlags()), -1);
    EXPECT_EQ(errno, EPIPE);
}

TEST(CopyInKernel, StartsAtTheCurrentOffsetsAndTruncatesNothing) {
    const test::ScratchDirectory scratch;
    const FileDesc from(::open(scratch.file("from", "0123456789").c_str(), O_RDONLY));
    const FileDesc to(::open(scratch.file("to", "abcdefghij").c_str(), O_WRONLY));
    ::lseek(from, 2, SEEK_SET);
    ::lseek(to, 5, SEEK_SET);
    const ssize_t copied = platform::copyInKernel(from, to, 3);
    if (copied == -1) {
        GTEST_SKIP() << "this file system does not copy by itself";
    }
    EXPECT_EQ(copied, 3);
    EXPECT_EQ(test::readFile(scratch / "to"), "abcde234ij");
    ::lseek(from, 0, SEEK_END);
    EXPECT_EQ(platform::copyInKernel(from, to, 3), 0);
}

TEST(SearchFlag, OpensADirectoryWhoseEntriesCanBeReached) {
    const test::ScratchDirectory scratch;
    scratch.file("file");
    const FileDesc directory(
        ::open(scratch.path().c_str(), platform::searchFlag() | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(::faccessat(directory, "file", F_OK, 0), 0);
}

TEST(CurrentDirectory, IsGivenAsFarAsThereIsRoomForIt) {
    const test::ScratchDirectory scratch;
    const test::WorkingDirectory inside(scratch.path());
    const std::string path = std::filesystem::canonical(scratch.path());
    EXPECT_EQ(platform::currentDirectory(path.size() + 1), path);
    EXPECT_EQ(platform::currentDirectory(path.size()), "");
}

TEST(TemporaryNamePattern, IsTheFormOfTheNamesOfTmpnam) {
    const std::string pattern = platform::temporaryNamePattern;
    EXPECT_EQ(pattern.rfind(P_tmpdir "/file", 0), 0U);
    EXPECT_EQ(pattern.size(), std::string(P_tmpdir "/fileXXXXXX").size());
}

TEST(CoarseMilliseconds, GoForwardOnly) {
    const std::int64_t before = platform::coarseMilliseconds();
    std::int64_t now = before;
    while (now == before) {
        now = platform::coarseMilliseconds();
    }
    EXPECT_GT(now, before);
}

// In bytes.
long residentMemory() {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
}

TEST(FreedMemory, StaysWithTheProcessUntilItIsReturned) {
    if (test::isSanitized) {
        GTEST_SKIP() << "sanitizers have an allocator of their own";
    }
    constexpr long size = 64L << 20;
    platform::keepFreedMemory();
    const long before = residentMemory();
    {
        const std::string block(static_cast<std::size_t>(size), 'x');
        EXPECT_EQ(block.find('y'), std::string::npos);  // what nobody uses may not be allocated
    }
    EXPECT_GT(residentMemory(), before + size / 2);
    platform::returnFreedMemory();
    EXPECT_LT(residentMemory(), before + size / 2);
}

/// The directory that tempnam(3) of the GNU library takes.
class TemporaryDirectory : public testing::Test {
  protected:
    static std::string with(const std::optional<std::string>& variable) {
        const test::EnvironmentVariable set("TMPDIR", variable);
        return platform::temporaryDirectory();
    }

    test::ScratchDirectory scratch;
};

TEST_F(TemporaryDirectory, IsTheOneOfTheEnvironmentWithOneSeparatorAtItsEnd) {
    const std::string directory = scratch.directory("t");
    for (const char* end : {"", "/", "//"}) {
        EXPECT_EQ(with(directory + end), directory + "/");
    }
}

TEST_F(TemporaryDirectory, HasAnotherSeparatorWhenItIsTheRoot) {
    EXPECT_EQ(with("/"), "//");
    EXPECT_EQ(with("//"), "//");
}

TEST_F(TemporaryDirectory, IsTheCommonOneWhenTheEnvironmentNamesNone) {
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional(scratch / "missing"), std::optional(scratch.file("f"))}) {
        EXPECT_EQ(with(value), "/tmp/") << value.value_or("(unset)");
    }
}

TEST(FatalSignals, AreThoseThatEndAProcessWhichDoesNothingAboutThem) {
    for (const int sig : {SIGCHLD, SIGCONT, SIGURG, SIGWINCH, SIGTSTP, SIGTTIN, SIGTTOU, SIGSTOP}) {
        EXPECT_FALSE(platform::endsProcessByDefault(sig)) << sig;
    }
    for (const int sig : {SIGTERM, SIGINT, SIGHUP, SIGSEGV, SIGPIPE, SIGIO, SIGPWR, SIGKILL}) {
        EXPECT_TRUE(platform::endsProcessByDefault(sig)) << sig;
    }
}

TEST(SyncToDisk, TellsOfAnErrorButNotOfAFileThatHasNothingToBeSynced) {
    EXPECT_EQ(platform::syncToDisk(-1), -1);
    EXPECT_EQ(errno, EBADF);
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    EXPECT_EQ(platform::syncToDisk(ends[1]), 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

}  // namespace
}  // namespace corvane
