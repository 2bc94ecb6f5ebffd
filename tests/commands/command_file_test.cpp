#include "commands/command_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "support/command_fixture.h"
#include "support/held_signals.h"
#include "support/resource_limit.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::commandLine;

class FileOfACommand : public test::CommandTest {
  protected:
    FileOfACommand() { log.take(); }

    std::string closed(int result) const {
        return commandLine("DEBUG", cmd,
                           ": close (" + std::to_string(result) + ") file '" + path + "'");
    }

    const std::string cmd = "write";
    std::string path = scratch / "file";
    CommandLog commandLog{server.addressOf(serverSocket()), cmd};
    CommandFile file{path, commandLog};
};

TEST_F(FileOfACommand, MayBeReadAndWrittenByEveryoneWhomTheMaskAllows) {
    const mode_t previous = ::umask(0);
    EXPECT_EQ(file.openForWriting(), 0);
    ::umask(previous);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0666));
}

TEST_F(FileOfACommand, CountsWhatWasWritten) {
    ASSERT_EQ(file.openForWriting(), 0);
    EXPECT_TRUE(file.write(std::string(1500, 'x')));
    EXPECT_TRUE(file.write(std::string(3'000'000, 'y')));
    EXPECT_TRUE(file.finishWriting());
    EXPECT_EQ(file.written(), 3'001'500U);
    EXPECT_EQ(fs::file_size(path), 3'001'500U);
}

TEST_F(FileOfACommand, CountsAfterAFailureWhatABufferTakes) {
    const test::FileSizeLimit full(1000);
    ASSERT_EQ(file.openForWriting(), 0);
    EXPECT_TRUE(file.write(std::string(500, 'x')));
    EXPECT_FALSE(file.write(std::string(501, 'x')));
    EXPECT_EQ(file.written(), 1001U);
    EXPECT_FALSE(file.write(std::string(100'000, 'x')));
    EXPECT_EQ(file.written(), 4096U);
}

TEST_F(FileOfACommand, LetsSignalsInBetweenTheBlocksOfALongText) {
    ASSERT_EQ(file.openForWriting(), 0);
    const HeldSignals signals;
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_TRUE(file.write(std::string(3'000'000, 'x')));
    EXPECT_EQ(signals.handled(), 1);
}

// The old contents are gone, and the new ones at hand.
TEST_F(FileOfACommand, IsWrittenToItsEndAlsoWhenTheProgramHasToStop) {
    ASSERT_EQ(file.openForWriting(), 0);
    const auto stopped = [this] {
        requestStop();
        std::_Exit(file.write(std::string(3'000'000, 'x')) ? 0 : 1);
    };
    EXPECT_EXIT(stopped(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(fs::file_size(path), 3'000'000U);
}

TEST_F(FileOfACommand, IsClosedOnce) {
    ASSERT_EQ(file.openForWriting(), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(log.lines(), Lines{closed(0)});
}

TEST_F(FileOfACommand, IsClosedInTheEnd) {
    const int before = test::nextDescriptor();
    {
        CommandFile other(path, commandLog);
        ASSERT_EQ(other.openForWriting(), 0);
    }
    EXPECT_EQ(test::nextDescriptor(), before);
    EXPECT_EQ(log.lines(), Lines{closed(0)});
}

TEST_F(FileOfACommand, HasNoSizeWhenItIsADirectory) {
    fs::create_directory(path);
    ASSERT_EQ(file.openForReading(), 0);
    EXPECT_EQ(file.size(), 0U);
    EXPECT_FALSE(file.isRegular());
}

TEST_F(FileOfACommand, MayBeAStream) {
    EXPECT_EQ(closeFile(nullptr, path, commandLog), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(closeFile(std::fopen(path.c_str(), "w+"), path, commandLog), 0);
    EXPECT_EQ(log.lines(), Lines{closed(0)});
}

TEST_F(FileOfACommand, MayBeAStreamWhoseLastBytesAreLost) {
    const test::FileSizeLimit full(0);
    FILE* const stream = std::fopen(path.c_str(), "w+");
    std::fputc('x', stream);
    EXPECT_EQ(closeFile(stream, path, commandLog), EFBIG);
    EXPECT_EQ(log.lines(), Lines{closed(EFBIG)});
}

}  // namespace
}  // namespace corvane
