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

}  // namespace
}  // namespace corvane
