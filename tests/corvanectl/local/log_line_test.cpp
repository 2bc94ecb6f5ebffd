#include "corvanectl/local/log_line.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

constexpr std::string_view line =
    "2026-11-22 16:00:00,123 [ERROR,corvane.server.process.client.cmd.listDir] Client "
    "127.0.0.1:40000: cmd 'listDir': ERROR: 'opendir '/x/' error 2 (2)'";

TEST(ParseLogLine, TakesALineOfTheDefaultLayoutApart) {
    const LogLine parsed = parseLogLine(line);
    EXPECT_EQ(parsed.level, Level::Error);
    EXPECT_EQ(parsed.category, "corvane.server.process.client.cmd.listDir");
    EXPECT_EQ(parsed.message.substr(0, 6), "Client");
}

TEST(ParseLogLine, FindsTheLevelInAnyLayout) {
    EXPECT_EQ(parseLogLine("1234 WARN corvane : text").level, Level::Warn);
    EXPECT_EQ(parseLogLine("ERROR : text").level, Level::Error);
    EXPECT_EQ(parseLogLine("ERRORS of WARNINGS").level, Level::Unknown);
    EXPECT_EQ(parseLogLine("").level, Level::Unknown);
}

TEST(ParseLogLine, TakesNoCutLineForAWholeOne) {
    for (std::size_t size = 0; size < line.find("] ") + 2; ++size) {
        EXPECT_EQ(parseLogLine(line.substr(0, size)).category, "") << size;
    }
}

TEST(LevelNamed, KnowsTheNamesOfTheLoggingLibrary) {
    EXPECT_EQ(levelNamed("FATAL"), Level::Fatal);
    EXPECT_EQ(levelNamed("debug"), Level::Debug);
    EXPECT_EQ(levelNamed("LOUD"), Level::Unknown);
}

TEST(NamesClient, ComparesWholeAddresses) {
    EXPECT_TRUE(namesClient(line, "127.0.0.1:40000"));
    EXPECT_TRUE(namesClient(line, "127.0.0.1"));
    EXPECT_TRUE(namesClient(line, "40000"));
    EXPECT_FALSE(namesClient(line, "127.0.0.1:4000"));
    EXPECT_FALSE(namesClient(line, "27.0.0.1"));
}

TEST(NamesCommand, ReadsTheMessageAndTheCategory) {
    EXPECT_TRUE(namesCommand(parseLogLine(line), "listDir"));
    EXPECT_FALSE(namesCommand(parseLogLine(line), "listDi"));
    EXPECT_FALSE(namesCommand(parseLogLine(line), "Dir"));
    EXPECT_TRUE(namesCommand({Level::Error, "corvane.server.process.client.cmd.userDir", "text"},
                             "userDir"));
    EXPECT_TRUE(namesCommand({Level::Warn, "", "Client 1.2.3.4:5: command 'x' not found"}, "x"));
}

}  // namespace
}  // namespace corvane::ctl
