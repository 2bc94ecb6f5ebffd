#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <random>

#include "reply/file_details.h"
#include "support/command_fixture.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::commandLine;
using test::failure;
using test::success;

std::string entry(const std::string& id, const std::string& name, const std::string& extra) {
    return "<Detail id=\"" + id + "\" extra=\"" + extra + "\"" +
           (id == "file" ? " size=\"0\"" : "") + " Value=\"" + name + "\" />";
}

class ListDir : public test::CommandTest {};

TEST_F(ListDir, ListsDirectoriesBeforeFilesAndBothByName) {
    for (const char* name : {"b.txt", "A.txt", ".hidden", "c"}) {
        scratch.file(name);
    }
    for (const char* name : {"zeta", "Alpha", ".cache", "Tool.app"}) {
        scratch.directory(name);
    }
    EXPECT_EQ(ask("listDir", scratch.path() + "\r\n"),
              success("listDir",
                      entry("directory", ".cache/", "dh") + entry("directory", "Alpha/", "d") +
                          entry("directory", "Tool.app/", "ds") + entry("directory", "zeta/", "d") +
                          entry("file", ".hidden", "h") + entry("file", "A.txt", "") +
                          entry("file", "b.txt", "") + entry("file", "c", ""),
                      scratch.path()));
    EXPECT_EQ(log.lines(),
              Lines{commandLine("DEBUG", "listDir", ": dir '" + scratch.path() + "'")});
}

TEST_F(ListDir, HasNoDetailsForAnEmptyDirectory) {
    EXPECT_EQ(ask("listDir", scratch.path()), success("listDir", "", scratch.path()));
}

TEST_F(ListDir, CorrectsThePath) {
    scratch.file("a/b/file");
    EXPECT_EQ(ask("listDir", scratch.path() + "a\\b"),
              success("listDir", entry("file", "file", ""), scratch / "a/b/"));
}

TEST_F(ListDir, ListsTheRootForAnEmptyPath) {
    const std::string expected =
        success("listDir", "<Detail id=\"directory\" extra=\"\" size=\"0\" Value=\"/\" />");
    EXPECT_EQ(ask("listDir", "\n"), expected);
    EXPECT_EQ(ask("listDir"), expected);
    EXPECT_EQ(log.lines(), Lines{commandLine("DEBUG", "listDir", ": dir ''")});
}

TEST_F(ListDir, LeavesNamesUnescaped) {
    scratch.file("a<&\">'");
    EXPECT_EQ(ask("listDir", scratch.path()),
              success("listDir", entry("file", "a<&\">'", ""), scratch.path()));
}

TEST_F(ListDir, TurnsBackslashesInTheNamesOfDirectoriesOnly) {
    scratch.directory("d\\e");
    scratch.file("f\\g");
    EXPECT_EQ(ask("listDir", scratch.path()),
              success("listDir", entry("directory", "d/e/", "d") + entry("file", "f\\g", ""),
                      scratch.path()));
}

TEST_F(ListDir, FailsForAMissingDirectory) {
    const std::string path = scratch / "missing";
    EXPECT_EQ(ask("listDir", path), failure("listDir"));
    EXPECT_EQ(
        log.lines(),
        (Lines{commandLine("DEBUG", "listDir", ": dir '" + path + "/'"),
               commandLine("ERROR", "listDir", ": ERROR: 'opendir '" + path + "/' error 2 (2)'")}));
}

TEST_F(ListDir, FailsForAFile) {
    const std::string path = scratch.file("file");
    EXPECT_EQ(ask("listDir", path), failure("listDir"));
    EXPECT_EQ(log.lines().back(),
              commandLine("ERROR", "listDir", ": ERROR: 'opendir '" + path + "/' error 20 (20)'"));
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// What a listing of `directory` must be, from the file system library's own listing. Only for names
// of ASCII letters and digits.
std::string modelOf(const std::string& directory) {
    std::vector<std::pair<std::string, bool>> entries;
    for (const auto& found : fs::directory_iterator(directory)) {
        entries.emplace_back(found.path().filename(), found.is_directory() && !found.is_symlink());
    }
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        return a.second != b.second ? a.second : lower(a.first) < lower(b.first);
    });
    std::string details;
    for (const auto& [name, isDirectory] : entries) {
        const bool broken = !fs::exists(directory + name);
        details += isDirectory ? entry("directory", name + "/", "d")
                               : entry("file", name, broken ? "r" : "");
    }
    return details;
}

TEST_F(ListDir, ListsRandomDirectoriesAsTheModelSays) {
    const std::string characters = "abcABCxyzXYZ019";
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        const std::string directory = scratch.directory(std::to_string(seed)) + "/";
        std::vector<std::string> used;
        for (int i = 0; i < 40; ++i) {
            std::string name(1 + random() % 5, ' ');
            for (char& c : name) {
                c = characters[random() % characters.size()];
            }
            if (std::find(used.begin(), used.end(), lower(name)) != used.end()) {
                continue;  // the order of names that differ in case only is not defined
            }
            used.push_back(lower(name));
            switch (random() % 4) {
                case 0:
                    fs::create_directory(directory + name);
                    break;
                case 1:
                    fs::create_symlink(random() % 2 == 0 ? "." : "nowhere!", directory + name);
                    break;
                default:
                    test::writeFile(directory + name, "x");
            }
        }
        ASSERT_EQ(ask("listDir", directory), success("listDir", modelOf(directory), directory))
            << "seed " << seed;
    }
}

CorvaneDetail detail(const std::string& id, const std::string& name) { return {id, name, false}; }

TEST(FilesToDetails, DropsTheDirectoryItselfAndItsParent) {
    EXPECT_TRUE(files2details({FileInfo(".", 1), FileInfo("..", 1)}).empty());
    EXPECT_TRUE(files2details({}).empty());
}

TEST(FilesToDetails, FillsTheFieldsOfAnEntry) {
    FileInfo file("f", 0);
    file.attributes = "hr";
    file.date = "today";
    file.size = 1234;
    FileInfo directory("d", 1);
    directory.attributes = "d";
    directory.size = 99;
    const auto details = files2details({file, directory});
    ASSERT_EQ(details.size(), 2U);
    EXPECT_EQ(details[0].id, "directory");
    EXPECT_EQ(details[0].value, "d/");
    EXPECT_EQ(details[0].extra, "d");
    EXPECT_EQ(details[0].size, "");
    EXPECT_EQ(details[1].id, "file");
    EXPECT_EQ(details[1].value, "f");
    EXPECT_EQ(details[1].extra, "hr");
    EXPECT_EQ(details[1].size, "1234");
    EXPECT_EQ(details[1].date, "today");
    EXPECT_FALSE(details[1].isText);
}

TEST(FilesToDetails, PutsHigherKindsFirst) {
    const auto details = files2details({FileInfo("a", 0), FileInfo("b", 2), FileInfo("c", 1),
                                        FileInfo("d", 4), FileInfo("e", 3), FileInfo("f", 9)});
    std::string order;
    for (const CorvaneDetail& one : details) {
        order += one.id + ":" + one.value + " ";
    }
    EXPECT_EQ(order, "domain:d server:e share:b directory:c/ directory:f/ file:a ");
}

TEST(FilesToDetails, SortsAsTheComparisonSays) {
    std::mt19937 random(20260902);
    const std::vector<std::string> letters{"a", "A", "\xC4\x85", "b", "_", ".", "z", "\xFF", "1"};
    std::vector<FileInfo> files;
    for (int i = 0; i < 2000; ++i) {
        std::string name;
        for (auto length = 1 + random() % 4; length > 0; --length) {
            name += letters[random() % letters.size()];
        }
        files.emplace_back(name, 0);
    }
    const auto details = files2details(files);
    EXPECT_TRUE(std::is_sorted(
        details.begin(), details.end(),
        [](const CorvaneDetail& a, const CorvaneDetail& b) { return cmpFileInfo2(a, b) < 0; }));
}

TEST(CompareDetails, LooksAtTheKindAndThenAtTheName) {
    EXPECT_LT(cmpFileInfo2(detail("directory", "z"), detail("file", "a")), 0);
    EXPECT_GT(cmpFileInfo2(detail("share", "a"), detail("server", "z")), 0);
    EXPECT_LT(cmpFileInfo2(detail("domain", "z"), detail("server", "a")), 0);
    EXPECT_EQ(cmpFileInfo2(detail("file", "ABC"), detail("file", "abc")), 0);
    EXPECT_LT(cmpFileInfo2(detail("file", "a"), detail("unknown", "B")), 0);
    EXPECT_GT(cmpFileInfo2(detail("file", "b"), detail("file", "A")), 0);
}

}  // namespace
}  // namespace corvane
