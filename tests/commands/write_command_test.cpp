#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "support/command_fixture.h"
#include "support/resource_limit.h"
#include "support/unix_socket.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::commandLine;
using test::success;

std::string failedWith(int error) {
    return test::replyText("write", "FAILED", " errno=\"" + std::to_string(error) + "\"", "");
}

class WriteCommand : public test::CommandTest {
  protected:
    std::string write(const std::string& name, const std::string& data) {
        return ask("write", name + "\n" + data);
    }
    Lines linesOfSuccess(const std::string& name, std::size_t size) const {
        return {commandLine("DEBUG", "write", ": open file '" + name + "'"),
                commandLine("DEBUG", "write", ": close (0) file '" + name + "'"),
                commandLine(
                    "DEBUG", "write",
                    ": write file '" + name + "' written bytes " + std::to_string(size) + " OK")};
    }

    std::string path = scratch / "file";
};

TEST_F(WriteCommand, CreatesAFileWithTheDataAndLogsEachStep) {
    EXPECT_EQ(write(path, "hello"), success("write"));
    EXPECT_EQ(test::readFile(path), "hello");
    EXPECT_EQ(log.lines(), linesOfSuccess(path, 5));
}

TEST_F(WriteCommand, CreatesAnEmptyFileWithoutData) {
    for (const std::string& parameters : {path, path + "\n", path + "\r\n"}) {
        scratch.file("file", "old");
        EXPECT_EQ(ask("write", parameters), success("write"));
        EXPECT_EQ(test::readFile(path), "");
        EXPECT_EQ(log.lines(), linesOfSuccess(path, 0));
    }
}

TEST_F(WriteCommand, ReplacesWhatTheFileHeld) {
    scratch.file("file", "a longer text");
    EXPECT_EQ(write(path, "short"), success("write"));
    EXPECT_EQ(test::readFile(path), "short");
}

TEST_F(WriteCommand, TakesTheDataByteForByte) {
    std::string data = "\r\n\n";
    for (int byte = 2; byte < 256; ++byte) {
        data += static_cast<char>(byte);
    }
    data += "\r\n";
    EXPECT_EQ(write(path, data), success("write"));
    EXPECT_EQ(test::readFile(path), data);
}

TEST_F(WriteCommand, WritesDataOfAllSizes) {
    for (const std::size_t size : {1023U, 1024U, 1025U, 262'143U, 262'144U, 262'145U, 5'000'000U}) {
        std::string data(size, 'x');
        data.back() = 'e';
        EXPECT_EQ(write(path, data), success("write"));
        EXPECT_TRUE(test::readFile(path) == data) << size;
        EXPECT_EQ(log.lines(), linesOfSuccess(path, size));
    }
}

TEST_F(WriteCommand, CleansTheNameAndWarns) {
    scratch.directory("d");
    const std::string given = scratch.path() + "d\\a?b*.txt";
    const std::string corrected = scratch / "d/ab.txt";
    EXPECT_EQ(write(given, "x"), success("write"));
    EXPECT_EQ(test::readFile(corrected), "x");
    Lines expected = linesOfSuccess(corrected, 1);
    expected.insert(expected.begin(),
                    "WARN corvane.fileutil.correctPathInvalidChars path '" + scratch.path() +
                        "d/a?b*.txt' has invalid char(s) and was converted to '" + corrected + "'");
    EXPECT_EQ(log.lines(), expected);
}

TEST_F(WriteCommand, GivesAFileThePermissionsThatTheMaskLeaves) {
    const mode_t previous = ::umask(027);
    write(path, "x");
    ::umask(previous);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
}

TEST_F(WriteCommand, AnswersTheErrorOfTheOpen) {
    const auto failsToOpen = [this](const std::string& name, int error) {
        EXPECT_EQ(write(name, "x"), failedWith(error)) << name;
        EXPECT_EQ(log.lines(), Lines{commandLine("ERROR", "write",
                                                 ": fail (" + std::to_string(error) +
                                                     ") to open file '" + name + "'")});
    };
    failsToOpen(scratch / "missing/file", ENOENT);
    failsToOpen(scratch.directory("d"), EISDIR);
    failsToOpen(scratch.file("f", "kept") + "/x", ENOTDIR);
    failsToOpen("", ENOENT);
    EXPECT_EQ(test::readFile(scratch / "f"), "kept");
}

TEST_F(WriteCommand, RefusesPipesAndSockets) {
    const test::WorkingDirectory inside(scratch.path());
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(write("pipe", "x"), failedWith(EINVAL));
    const FileDesc sock = test::unixSocketAt("socket");
    EXPECT_EQ(write("socket", "x"), failedWith(ENXIO));
    EXPECT_TRUE(fs::exists("pipe") && fs::exists("socket"));
}

TEST_F(WriteCommand, RemovesThePartialFileWhenTheDiskIsFull) {
    for (const std::size_t size : {1001U, 100'000U, 1'000'000U}) {
        const test::FileSizeLimit full(1000);
        EXPECT_EQ(write(path, std::string(size, 'x')), failedWith(1));
        EXPECT_FALSE(fs::exists(path)) << size;
        ASSERT_EQ(log.lines().size(), 3U);
        EXPECT_EQ(log.lines()[0], commandLine("DEBUG", "write", ": open file '" + path + "'"));
        const std::string begin =
            commandLine("ERROR", "write", ": fail (1) to write file '" + path + "' at byte ");
        EXPECT_EQ(log.lines()[2].substr(0, begin.size()), begin);
    }
}

// The name of an open descriptor can be opened again, but not removed.
TEST_F(WriteCommand, WarnsWhenThePartialFileStays) {
    const FileDesc file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    const std::string name = "/proc/self/fd/" + std::to_string(file);
    if (!fs::exists(name)) {
        GTEST_SKIP() << "this system has no such names";
    }
    const int refusal = ::unlink(name.c_str()) == 0 ? 0 : errno;  // not the same for everyone
    const test::FileSizeLimit full(1000);
    EXPECT_EQ(write(name, std::string(5000, 'x')), failedWith(1));
    EXPECT_EQ(log.lines().back(),
              commandLine("WARN", "write",
                          ": clenup file '" + name + "' ERROR: 'remove file '" + name +
                              "' error (" + std::to_string(refusal) + ")'"));
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(WriteCommand, FillsTheDiskToTheLastByte) {
    const test::FileSizeLimit full(1000);
    EXPECT_EQ(write(path, std::string(1000, 'x')), success("write"));
    EXPECT_EQ(fs::file_size(path), 1000U);
}

TEST_F(WriteCommand, KeepsADeviceThatIsFull) {
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    fs::create_symlink("/dev/full", scratch / "full");
    const std::string name = scratch / "full";
    EXPECT_EQ(write(name, "x"), failedWith(1));
    EXPECT_TRUE(fs::is_symlink(name));
    EXPECT_EQ(log.lines().back(),
              commandLine("ERROR", "write", ": fail (1) to write file '" + name + "' at byte 1"));
}

TEST_F(WriteCommand, WritesThroughALink) {
    fs::create_symlink("target", path);
    EXPECT_EQ(write(path, "x"), success("write"));
    EXPECT_EQ(test::readFile(scratch / "target"), "x");
    EXPECT_TRUE(fs::is_symlink(path));
}

// A name that is too long for a line counts as empty, and with it the data are lost.
TEST_F(WriteCommand, FailsForANameThatIsTooLong) {
    EXPECT_EQ(write(std::string(2000, 'n'), "x"), failedWith(ENOENT));
}

TEST_F(WriteCommand, LeavesNoDescriptorOpen) {
    const int before = test::nextDescriptor();
    write(path, "x");
    write(scratch / "no/file", "x");
    EXPECT_EQ(test::nextDescriptor(), before);
}

}  // namespace
}  // namespace corvane
