#include "reply/file_details.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/held_signals.h"
#include "support/thrown.h"

namespace corvane {
namespace {

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

TEST(FilesToDetails, KeepsTheOrderOfNamesThatDifferInCaseOnly) {
    for (const std::string name : {"aA", "Aa"}) {
        std::vector<FileInfo> files;
        for (int i = 0; i < 100; ++i) {
            files.emplace_back(std::string(1, name[static_cast<std::size_t>(i) % 2]), 0);
        }
        const auto details = files2details(files);
        for (std::size_t i = 0; i < files.size(); ++i) {
            EXPECT_EQ(details[i].value, files[i].name) << i;
        }
    }
}

TEST(FilesToDetails, LetsSignalsInWhileThereAreMany) {
    const HeldSignals signals;
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(files2details(std::vector<FileInfo>(5000, FileInfo("f", 0))).size(), 5000U);
    EXPECT_EQ(signals.handled(), 1);
}

TEST(FilesToDetails, EndsWhenTheProgramHasToStop) {
    const auto stopped = [] {
        requestStop();
        const std::string thrown = test::thrownBy<IOException>(
            [] { files2details(std::vector<FileInfo>(5000, FileInfo("f", 0))); });
        std::exit(thrown == test::withCode("listing was stopped", EINTR) ? 0 : 1);
    };
    EXPECT_EXIT(stopped(), testing::ExitedWithCode(0), "");
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
