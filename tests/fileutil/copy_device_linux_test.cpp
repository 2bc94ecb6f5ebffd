// Copying to a device that takes its bytes slowly. Linux only: not every system tells when a
// terminal takes no more.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <thread>
#include <utility>

#include "fileutil/file_operations.h"
#include "platform/file_desc.h"
#include "support/scratch_directory.h"
#include "support/wait_until.h"

namespace corvane {
namespace {

/// A terminal that hands on every byte as it is.
class RawTerminal {
  public:
    RawTerminal() : near_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        ::grantpt(near_);
        ::unlockpt(near_);
        path_ = ::ptsname(near_);
        far_ = FileDesc(::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios settings{};
        ::tcgetattr(far_, &settings);
        ::cfmakeraw(&settings);
        ::tcsetattr(far_, TCSANOW, &settings);
    }

    const std::string& path() const { return path_; }
    bool takesNoMore() const { return !isReady(far_, POLLOUT); }
    /// How many bytes there are to read.
    int waiting() const {
        int count = 0;
        return ::ioctl(near_, FIONREAD, &count) == 0 ? count : 0;
    }

    /// What there is to read now.
    std::string read() {
        std::array<char, 4096> block{};
        const ssize_t count = ::read(near_, block.data(), block.size());
        return {block.data(), static_cast<std::size_t>(count < 0 ? 0 : count)};
    }

  private:
    static bool isReady(int fd, short event) {
        pollfd wanted{fd, event, 0};
        return ::poll(&wanted, 1, 0) == 1 && (wanted.revents & event) != 0;
    }

    FileDesc near_;
    FileDesc far_;
    std::string path_;
};

TEST(CopyToADevice, GivesAllBytesToAReaderThatComesLate) {
    const test::ScratchDirectory scratch;
    const std::string text(100'000, 'x');
    const std::string src = scratch.file("src", text);
    RawTerminal terminal;
    std::atomic<bool> copied = false;
    std::string received;
    std::thread reader([&] {
        // A terminal that was full may have room again and wake nobody up to tell of it.
        test::waitUntil([&, before = 0]() mutable {
            const int now = terminal.waiting();
            const bool rests = now > 0 && std::exchange(before, now) == now;
            return rests || terminal.takesNoMore() || copied;
        });
        test::waitUntil([&] {
            const std::string piece = terminal.read();
            received += piece;
            return received.size() == text.size() || (copied && piece.empty());
        });
    });
    EXPECT_NO_THROW(copyFile(src, terminal.path()));
    copied = true;
    reader.join();
    EXPECT_EQ(received.size(), text.size());
}

}  // namespace
}  // namespace corvane
