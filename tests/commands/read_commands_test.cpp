#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/command_fixture.h"
#include "support/resource_limit.h"
#include "support/thrown.h"
#include "support/unix_socket.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

using test::commandLine;
using test::failure;
using test::success;
using test::textDetail;
using test::valueDetail;

class ReadCommands : public test::CommandTest {
  protected:
    std::string readByte(const std::string& offset) {
        return ask("readByte", path + "\n" + offset);
    }

    // The lines of a failure after the file was opened.
    Lines failedLines(const std::string& cmd, const std::string& first,
                      const std::string& reason) const {
        return {commandLine("DEBUG", cmd, ": fname '" + path + "'" + first),
                commandLine("DEBUG", cmd, ": open file '" + path + "'"),
                commandLine("ERROR", cmd, ": ERROR: '" + reason + "'"),
                commandLine("DEBUG", cmd, ": close (0) file '" + path + "'")};
    }

    std::string path = scratch / "file";
};

TEST_F(ReadCommands, ReadByteAnswersTheByteAsANumber) {
    scratch.file("file", std::string("\xFF\x00 A\x80", 5));
    EXPECT_EQ(readByte("0"), success("readByte", valueDetail("255")));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "readByte", ": fname '" + path + "' offset 0"),
                     commandLine("DEBUG", "readByte", ": open file '" + path + "'"),
                     commandLine("DEBUG", "readByte", ": close (0) file '" + path + "'")}));
    EXPECT_EQ(readByte("1\r\n"), success("readByte", valueDetail("0")));
    EXPECT_EQ(readByte(" +3x"), success("readByte", valueDetail("65")));
    EXPECT_EQ(readByte("4"), success("readByte", valueDetail("128")));
}

TEST_F(ReadCommands, ReadByteTakesJunkForZero) {
    scratch.file("file", "A");
    for (const char* offset : {"abc", "", "x1"}) {
        EXPECT_EQ(readByte(offset), success("readByte", valueDetail("65"))) << offset;
    }
    EXPECT_EQ(ask("readByte", path), success("readByte", valueDetail("65")));
}

TEST_F(ReadCommands, ReadByteFailsAtTheEndOfTheFile) {
    scratch.file("file", "abc");
    for (const std::string offset : {"3", "4", "2147483647"}) {
        EXPECT_EQ(readByte(offset), failure("readByte"));
        EXPECT_EQ(log.lines(), failedLines("readByte", " offset " + offset,
                                           "cannot read byte at offset " + offset + " on file '" +
                                               path + "' due to EOF (0)"));
    }
}

TEST_F(ReadCommands, ReadByteKeepsHugeOffsetsWithinTheLimits) {
    scratch.file("file", "abc");
    EXPECT_EQ(readByte("99999999999999999999"), failure("readByte"));
    EXPECT_EQ(log.lines()[0],
              commandLine("DEBUG", "readByte", ": fname '" + path + "' offset 2147483647"));
}

TEST_F(ReadCommands, ReadByteFailsBeforeTheBeginning) {
    scratch.file("file", "abc");
    EXPECT_EQ(readByte("-1"), failure("readByte"));
    EXPECT_EQ(log.lines(),
              failedLines("readByte", " offset -1",
                          "cannot move to offset -1 on file '" + path + "' (returns -1) (22)"));
}

TEST_F(ReadCommands, ReadByteFailsForADirectory) {
    scratch.directory("file");
    EXPECT_EQ(readByte("0"), failure("readByte"));
    EXPECT_EQ(log.lines(), failedLines("readByte", " offset 0",
                                       "cannot read byte at offset 0 on file '" + path +
                                           "' (fread returns 0) (1)"));
}

TEST_F(ReadCommands, ReadByteFailsForAMissingFile) {
    EXPECT_EQ(readByte("7"), failure("readByte"));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "readByte", ": fname '" + path + "' offset 7"),
                     commandLine("ERROR", "readByte",
                                 ": ERROR: 'cannot open file '" + path + "' for read (2)'")}));
}

TEST_F(ReadCommands, ReadTextAnswersTheEscapedContent) {
    scratch.file("file", "a<b>&\"'\r\n\xC4\x85\xFF%s");
    EXPECT_EQ(ask("readText", path + "\r\n"),
              success("readText", textDetail("a&lt;b&gt;&amp;&quot;&apos;\r\n\xC4\x85\xFF%s")));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "readText", ": fname '" + path + "'"),
                     commandLine("DEBUG", "readText", ": open file '" + path + "'"),
                     commandLine("DEBUG", "readText", ": read 14 bytes from file '" + path + "'"),
                     commandLine("DEBUG", "readText", ": close (0) file '" + path + "'")}));
}

TEST_F(ReadCommands, ReadTextAnswersAnEmptyText) {
    scratch.file("file");
    EXPECT_EQ(ask("readText", path), success("readText", textDetail("")));
    EXPECT_EQ(log.lines()[2],
              commandLine("DEBUG", "readText", ": read 0 bytes from file '" + path + "'"));
}

TEST_F(ReadCommands, ReadTextDropsZeroBytesButCountsThem) {
    scratch.file("file", std::string("a\0b\0\0", 5));
    EXPECT_EQ(ask("readText", path), success("readText", textDetail("ab")));
    EXPECT_EQ(log.lines()[2],
              commandLine("DEBUG", "readText", ": read 5 bytes from file '" + path + "'"));
}

TEST_F(ReadCommands, ReadTextReadsFilesOfAllSizes) {
    for (const std::size_t size : {8191U, 8192U, 8193U, 131'071U, 131'072U, 131'073U, 3'000'000U}) {
        std::string content(size, 'x');
        content[size / 2] = '&';
        content.back() = '<';
        scratch.file("file", content);
        std::string expected = content;
        expected.replace(size - 1, 1, "&lt;");
        expected.replace(size / 2, 1, "&amp;");
        EXPECT_TRUE(ask("readText", path) == success("readText", textDetail(expected))) << size;
    }
}

TEST_F(ReadCommands, ReadTextReadsAFileWhoseSizeIsNotKnown) {
    if (!std::filesystem::exists("/proc/self/status")) {
        GTEST_SKIP() << "this system has no files of unknown size";
    }
    EXPECT_NE(ask("readText", "/proc/self/status").find("Pid:"), std::string::npos);
}

TEST_F(ReadCommands, ReadTextFailsForADirectory) {
    scratch.directory("file");
    EXPECT_EQ(ask("readText", path), failure("readText"));
    EXPECT_EQ(log.lines(), failedLines("readText", "", "read error on file '" + path + "' (1)"));
}

TEST_F(ReadCommands, ReadTextFailsForAMissingFile) {
    EXPECT_EQ(ask("readText", path), failure("readText"));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "readText", ": fname '" + path + "'"),
                     commandLine("ERROR", "readText",
                                 ": ERROR: 'cannot open file '" + path + "' for read (2)'")}));
}

TEST_F(ReadCommands, RefuseWhatMightNeverEnd) {
    const test::WorkingDirectory inside(scratch.path());
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    const FileDesc sock = test::unixSocketAt("socket");
    const std::vector<std::pair<std::string, int>> names{
        {"pipe", EINVAL}, {"/dev/zero", EINVAL}, {"socket", ENXIO}};
    for (const auto& [name, error] : names) {
        for (const std::string cmd : {"readText", "readByte"}) {
            EXPECT_EQ(ask(cmd, name), failure(cmd));
            EXPECT_EQ(
                log.lines().back(),
                commandLine("ERROR", cmd,
                            ": ERROR: '" +
                                test::withCode("cannot open file '" + name + "' for read", error) +
                                "'"));
        }
    }
}

TEST_F(ReadCommands, TakeTheNameAsItIs) {
    scratch.file("a?*\\b", "A");
    EXPECT_EQ(ask("readText", scratch / "a?*\\b"), success("readText", textDetail("A")));
    EXPECT_EQ(ask("readByte", scratch / "a?*\\b"), success("readByte", valueDetail("65")));
}

TEST_F(ReadCommands, LeaveNoDescriptorOpen) {
    scratch.file("file", "x");
    const int before = test::nextDescriptor();
    ask("readText", path);
    readByte("0");
    readByte("9");
    ask("readText", scratch.path());
    EXPECT_EQ(test::nextDescriptor(), before);
}

}  // namespace
}  // namespace corvane
