#include "corvanectl/local/show_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/scratch_directory.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl::local {
namespace {

std::string line(const std::string& level, const std::string& text) {
    return concatenate("2026-11-22 16:00:00,123 [", level, ",corvane] ", text, "\n");
}

const std::string warning = line("WARN", "Client 127.0.0.1:40000: cmd 'copy': x");
const std::string detail = line("DEBUG", "Client 127.0.0.1:40001: cmd 'copy'");
const std::string request = line("DEBUG", "Request: 'write\nERROR in a text\n'");

std::string shown(const LogView& view, const std::string& lines, bool coloured = false) {
    LogFilter filter(view);
    return shownLines(lines, filter, coloured, coloured);
}

TEST(ShownLines, AreThoseOfTheLevelTheClientAndTheCommand) {
    const std::string all = warning + detail;
    EXPECT_EQ(shown({}, all), all);
    EXPECT_EQ(shown({false, Level::Info, "", ""}, all), warning);
    EXPECT_EQ(shown({false, Level::Debug, "127.0.0.1:40001", ""}, all), detail);
    EXPECT_EQ(shown({false, Level::Debug, "", "copy"}, all), all);
    EXPECT_EQ(shown({false, Level::Debug, "", "write"}, all), "");
}

TEST(ShownLines, KeepTheLinesOfATextTogether) {
    EXPECT_EQ(shown({false, Level::Info, "", ""}, request + warning), warning);
    EXPECT_EQ(shown({}, request), request);
}

TEST(ShownLines, HaveColoursAndNoCommandsOfTheLogsOwnOnATerminal) {
    EXPECT_EQ(shown({}, line("ERROR", "a\x1b[2J"), true),
              "\x1b[31m2026-11-22 16:00:00,123 [ERROR,corvane] a\\x1b[2J\x1b[0m\n");
    EXPECT_EQ(shown({}, "a\x1b[2J\n"), "a\x1b[2J\n");
}

TEST(LogViewOptions, AreToldFromTheParametersOfTheServersCommand) {
    const std::optional<LogView> view =
        LogView::parse({"-f", "--level", "warn", "--client=1.2.3.4", "--command", "copy"});
    ASSERT_TRUE(view.has_value());
    EXPECT_TRUE(view->follow);
    EXPECT_EQ(view->level, Level::Warn);
    EXPECT_EQ(view->client, "1.2.3.4");
    EXPECT_EQ(view->command, "copy");
    EXPECT_TRUE(LogView::parse({}).has_value());
    EXPECT_EQ(LogView::parse({"", "", "text"}), std::nullopt);
    EXPECT_EQ(LogView::parse({"game", "INFO", "text"}), std::nullopt);
    EXPECT_EQ(LogView::parse({"--level", "INFO", "text"}), std::nullopt);
    EXPECT_EQ(LogView::parse({"-x", "INFO", "text"}), std::nullopt);
}

TEST(LogViewOptions, AreRefusedWhereTheyMakeNoSense) {
    EXPECT_THROW(LogView::parse({"--level", "LOUD"}), Exception);
    EXPECT_THROW(LogView::parse({"--nothing"}), Exception);
}

class LogFollowerTest : public testing::Test {
  protected:
    void add(const std::string& text) const { std::ofstream(path, std::ios::app) << text; }
    const test::ScratchDirectory scratch;
    const std::string path = scratch.file("log", "one\n");
    LogFollower follower{path};
};

TEST_F(LogFollowerTest, GivesEveryWholeLineOnce) {
    EXPECT_EQ(follower.next(), "one\n");
    EXPECT_EQ(follower.next(), "");
    add("two\nthr");
    EXPECT_EQ(follower.next(), "two\n");
    EXPECT_EQ(follower.next(), "");
    add("ee\n");
    EXPECT_EQ(follower.next(), "three\n");
}

TEST_F(LogFollowerTest, GivesAllOfALogHoweverLongItIs) {
    std::string all = "one\n";
    while (all.size() < std::size_t{17} * 1024 * 1024) {
        all += std::string(all.size() % 1500, 'x') + "\n";
    }
    all += std::string(std::size_t{3} * 1024 * 1024, 'y') + "\nlast\n";
    scratch.file("log", all);
    std::string given;
    for (std::string lines = follower.next(); !lines.empty(); lines = follower.next()) {
        given += lines;
    }
    EXPECT_TRUE(given == all) << given.size() << " bytes of " << all.size();
}

TEST_F(LogFollowerTest, GoesOnAfterTruncationAndReplacement) {
    add("a longer line\n");
    follower.next();
    scratch.file("log", "new\n");
    EXPECT_EQ(follower.next(), "new\n");
    scratch.file("other", "another\n");
    std::filesystem::rename(scratch / "other", path);
    EXPECT_EQ(follower.next(), "another\n");
    std::filesystem::remove(path);
    EXPECT_EQ(follower.next(), "");
    scratch.file("log", "again\n");
    EXPECT_EQ(follower.next(), "again\n");
}

}  // namespace
}  // namespace corvane::ctl::local
