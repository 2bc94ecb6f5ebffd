// Files that keep a command waiting: devices that are slow, leases, short reads.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <sstream>

#include "reply/xml_escape.h"
#include "support/command_fixture.h"
#include "support/held_signals.h"
#include "support/lease.h"
#include "support/thrown.h"
#include "support/tree.h"
#include "support/wait_until.h"

namespace corvane {
namespace {

using test::success;
using test::textDetail;

class SlowFile : public test::CommandTest {};

/// A terminal in raw mode, both ends.
class Terminal {
  public:
    Terminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (master_ == -1 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) {
            return;
        }
        name_ = ::ptsname(master_);
        slave_ = FileDesc(::open(name_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios raw{};
        ::tcgetattr(slave_, &raw);
        ::cfmakeraw(&raw);
        ::tcsetattr(slave_, TCSANOW, &raw);
    }

    /// Empty where there are no terminals.
    const std::string& name() const { return name_; }

    /// The end of what is written; whoever reads the rest gets it first.
    void close() { slave_.close(); }

    /// Begins to read when what was written waits, and reads a little at a time until close().
    std::string readSlowly() const {
        EXPECT_TRUE(test::waitUntil([this] {
            int waiting = 0;
            return ::ioctl(master_, FIONREAD, &waiting) == 0 && waiting > 0;
        }));
        std::string text;
        std::array<char, 500> block{};
        ssize_t count = 0;
        while ((count = ::read(master_, block.data(), block.size())) > 0) {
            text.append(block.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    FileDesc master_;
    FileDesc slave_;
    std::string name_;
};

TEST_F(SlowFile, ThatIsADeviceGetsEveryByteOfAWrite) {
    Terminal terminal;
    if (terminal.name().empty()) {
        GTEST_SKIP() << "no terminals here";
    }
    std::string data(100'000, '.');
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>('a' + i % 26);
    }
    auto received = std::async(std::launch::async, [&] { return terminal.readSlowly(); });
    EXPECT_EQ(ask("write", terminal.name() + "\n" + data), success("write"));
    terminal.close();
    EXPECT_TRUE(received.get() == data);
}

TEST_F(SlowFile, MayBeWrittenWhenItsLeaseHasBeenGivenBack) {
    const test::Lease lease(scratch.file("file"));
    if (!lease.isGiven()) {
        GTEST_SKIP() << "no leases in " << scratch.path();
    }
    EXPECT_EQ(ask("write", (scratch / "file") + "\ntext"), success("write"));
    EXPECT_EQ(test::readFile(scratch / "file"), "text");
    EXPECT_TRUE(lease.wasRequested());
}

TEST_F(SlowFile, MayBeReadWhenItsLeaseHasBeenGivenBack) {
    const test::Lease lease(scratch.file("file", "text"));
    if (!lease.isGiven()) {
        GTEST_SKIP() << "no leases in " << scratch.path();
    }
    EXPECT_EQ(ask("readText", scratch / "file"), success("readText", textDetail("text")));
    EXPECT_TRUE(lease.wasRequested());
}

// Reading this file never fills a buffer.
TEST_F(SlowFile, IsReadToItsEndHoweverLittleComesAtOnce) {
    const std::string name = "/proc/kallsyms";
    std::ostringstream expected;
    const std::string content = std::filesystem::exists(name) ? test::readFile(name) : "";
    if (content.size() < 1'000'000) {
        GTEST_SKIP() << "no large file of unknown size here";
    }
    std::string escaped;
    appendEscaped(content, escaped);
    EXPECT_TRUE(ask("readText", name) == success("readText", textDetail(escaped)));
}

TEST_F(SlowFile, LetsSignalsInWhileItIsRead) {
    scratch.file("file", std::string(1'000'000, '\0'));  // nothing of it is sent
    const HeldSignals signals;
    ASSERT_EQ(::raise(SIGCHLD), 0);
    const std::string name = scratch / "file";
    MemoryStream parameters(name);
    const std::string reply =
        replyOf([&] { server.cmdReadText(serverSocket(), "readText", parameters); });
    EXPECT_EQ(reply, success("readText", textDetail("")));
    EXPECT_EQ(signals.handled(), 1);
}

TEST_F(SlowFile, IsReadNoFurtherWhenTheProgramHasToStop) {
    const std::string name = scratch.file("file", std::string(1'000'000, 'x'));
    const auto stopped = [&] {
        requestStop();
        ask("readText", name);
        const std::string reason = test::withCode("read error on file '" + name + "'", 1);
        std::_Exit(log.contains(test::commandLine("ERROR", "readText", ": ERROR: '" + reason + "'"))
                       ? 0
                       : 1);
    };
    EXPECT_EXIT(stopped(), testing::ExitedWithCode(0), "");
}

// The server's own requests lie in memory.
TEST_F(SlowFile, TakesTheDataOfAnyStream) {
    const std::string data(300'000, 'x');
    std::istringstream request((scratch / "file") + "\n" + data);
    EXPECT_EQ(replyOf([&] { server.cmdWrite(serverSocket(), "write", request); }),
              success("write"));
    EXPECT_TRUE(test::readFile(scratch / "file") == data);
}

}  // namespace
}  // namespace corvane
