#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>

#include "fileutil/file_info.h"
#include "fileutil/files_fixture.h"
#include "support/resource_limit.h"
#include "support/thrown.h"
#include "support/unix_socket.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

class ScanDirectory : public test::FilesTest {
  protected:
    // "TYPE ATTRIBUTES" of each entry by its name.
    std::map<std::string, std::string> scan() const {
        std::map<std::string, std::string> found;
        for (const FileInfo& info : scanDirectory(scratch.path())) {
            EXPECT_EQ(info.size, 0) << info.name;
            EXPECT_EQ(info.date, "") << info.name;
            found[info.name] = std::to_string(info.type) + " " + info.attributes;
        }
        return found;
    }
};

using Found = std::map<std::string, std::string>;

TEST_F(ScanDirectory, GivesTheRootForAnEmptyPath) {
    const std::vector<FileInfo> entries = scanDirectory("");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, "/");
    EXPECT_EQ(entries[0].type, 1);
    EXPECT_EQ(entries[0].attributes, "");
    EXPECT_EQ(entries[0].size, 0);
}

TEST_F(ScanDirectory, ListsTheDirectoryItselfAndItsParentWithoutMarkingThemHidden) {
    EXPECT_EQ(scan(), (Found{{".", "1 d"}, {"..", "1 d"}}));
}

TEST_F(ScanDirectory, MarksDirectoriesBundlesAndHiddenEntries) {
    scratch.file("plain");
    scratch.file(".hidden");
    scratch.file("File.app");
    scratch.directory("dir");
    scratch.directory("Tool.app");
    scratch.directory(".cache");
    scratch.directory(".x.app");
    scratch.directory("UPPER.APP");
    EXPECT_EQ(scan(), (Found{{".", "1 d"},
                             {"..", "1 d"},
                             {"plain", "0 "},
                             {".hidden", "0 h"},
                             {"File.app", "0 "},
                             {"dir", "1 d"},
                             {"Tool.app", "1 ds"},
                             {".cache", "1 dh"},
                             {".x.app", "1 dsh"},
                             {"UPPER.APP", "1 d"}}));
}

TEST_F(ScanDirectory, MarksAFileThatTheUserMayNotWrite) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write every file";
    }
    for (const char* name : {"x.txt", ".x.txt"}) {
        ASSERT_EQ(::chmod(scratch.file(name).c_str(), 0444), 0);
    }
    EXPECT_EQ(scan().at("x.txt"), "0 r");
    EXPECT_EQ(scan().at(".x.txt"), "0 hr");
}

// What a link leads to decides whether it can be written, so that a broken one cannot.
TEST_F(ScanDirectory, MarksABrokenLinkAsNotWritable) {
    std::filesystem::create_symlink("nowhere", scratch / "broken");
    std::filesystem::create_symlink("nowhere", scratch / ".broken");
    std::filesystem::create_symlink(scratch.file("there"), scratch / "whole");
    EXPECT_EQ(scan().at("broken"), "0 r");
    EXPECT_EQ(scan().at(".broken"), "0 hr");
    EXPECT_EQ(scan().at("whole"), "0 ");
}

TEST_F(ScanDirectory, TakesALinkToADirectoryForAFile) {
    std::filesystem::create_directory_symlink(scratch.directory("dir"), scratch / "link");
    EXPECT_EQ(scan().at("link"), "0 ");
}

TEST_F(ScanDirectory, TakesASocketForADirectoryAndAPipeForAFile) {
    const test::WorkingDirectory inside(scratch.path());
    const FileDesc sock = test::unixSocketAt("socket");
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    EXPECT_EQ(scan().at("socket"), "1 d");
    EXPECT_EQ(scan().at("pipe"), "0 ");
}

TEST_F(ScanDirectory, DropsLineEndsAndTheControlCharacterThreeAtBothEndsOfAName) {
    scratch.directory(
        "\n\x03"
        "a\rb\r\x03");
    scratch.directory("\x03.app\n");
    EXPECT_EQ(scan(), (Found{{".", "1 d"}, {"..", "1 d"}, {"a\rb", "1 d"}, {".app", "1 dsh"}}));
}

TEST_F(ScanDirectory, KeepsBlanksAtBothEndsOfAName) {
    scratch.directory(" a\t");
    EXPECT_EQ(scan(), (Found{{".", "1 d"}, {"..", "1 d"}, {" a\t", "1 d"}}));
}

TEST_F(ScanDirectory, TestsTheTrimmedNameForWriting) {
    scratch.file("x\n");
    EXPECT_EQ(scan().at("x"), "0 r");  // there is no file of that name
}

TEST_F(ScanDirectory, KeepsANameThatHasOnlyDroppedCharacters) {
    scratch.directory("\n\r");
    EXPECT_EQ(scan().at("\n\r"), "1 d");
}

TEST_F(ScanDirectory, ListsNamesOfAnyBytes) {
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/') {
            scratch.file(std::string{'a', static_cast<char>(byte), 'z'});
        }
    }
    const Found found = scan();
    EXPECT_EQ(found.size(), 254U + 2U);
    EXPECT_EQ(found.count("a\xFFz"), 1U);
    EXPECT_EQ(found.count("a\nz"), 1U);
}

TEST_F(ScanDirectory, AcceptsThePathWithAndWithoutASeparatorAtTheEnd) {
    scratch.file("dir/inner");
    EXPECT_EQ(scanDirectory(scratch / "dir").size(), 3U);
    EXPECT_EQ(scanDirectory(scratch / "dir/").size(), 3U);
}

TEST_F(ScanDirectory, SaysWhyADirectoryCannotBeOpened) {
    const auto scanning = [](const std::string& path) {
        return test::thrownBy<IOException>([&] { scanDirectory(path); });
    };
    const std::string missing = scratch / "missing";
    EXPECT_EQ(scanning(missing), "opendir '" + missing + "' error 2 (2)");
    const std::string file = scratch.file("file");
    EXPECT_EQ(scanning(file), "opendir '" + file + "' error 20 (20)");
}

TEST_F(ScanDirectory, SaysThatItMayNotRead) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read every directory";
    }
    const std::string closed = scratch.directory("closed");
    ASSERT_EQ(::chmod(closed.c_str(), 0), 0);
    EXPECT_EQ(test::thrownBy<IOException>([&] { scanDirectory(closed); }),
              "opendir '" + closed + "' error 13 (13)");
    ASSERT_EQ(::chmod(closed.c_str(), 0700), 0);
}

TEST_F(ScanDirectory, LeavesNoDescriptorOpen) {
    scratch.file("a");
    scanDirectory(scratch.path());
    const int before = test::nextDescriptor();
    for (int i = 0; i < 10; ++i) {
        scanDirectory(scratch.path());
    }
    EXPECT_EQ(test::nextDescriptor(), before);
}

}  // namespace
}  // namespace corvane
