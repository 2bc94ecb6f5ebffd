#include "corvanectl/request.h"

#include <gtest/gtest.h>

#include "text/exception.h"

namespace corvane::ctl {
namespace {

using namespace std::string_literals;

std::string requestOf(const std::string& command, const std::vector<std::string>& parameters,
                      const std::string& data = "") {
    const CommandUsage* usage = findCommand(command);
    if (usage == nullptr) {
        throw Exception("no command " + command);
    }
    return makeRequest(*usage, parameters, [&data] { return data; });
}

TEST(MakeRequest, PutsEachParameterOnALine) {
    EXPECT_EQ(requestOf("userDir", {}), "userDir\0"s);
    EXPECT_EQ(requestOf("rename", {"a", "-b"}), "rename\na\n-b\n\0"s);
    EXPECT_EQ(requestOf("log", {"", "", "100% done"}), "log\n\n\n100% done\n\0"s);
}

TEST(MakeRequest, PutsDataBehindTheFileNameAsItIs) {
    EXPECT_EQ(requestOf("write", {"f"}, "\r\nx\xff\n"), "write\nf\n\r\nx\xff\n\0"s);
    EXPECT_EQ(requestOf("write", {"f"}), "write\nf\n\0"s);
}

TEST(MakeRequest, ReadsNoDataForOtherCommands) {
    EXPECT_EQ(requestOf("delete", {"f"}, "data"), "delete\nf\n\0"s);
}

TEST(MakeRequest, RefusesAWrongNumberOfParameters) {
    EXPECT_THROW(requestOf("copy", {"a"}), Exception);
    EXPECT_NO_THROW(requestOf("copy", {"a", "b"}));
    EXPECT_NO_THROW(requestOf("copy", {"a", "b", "false", "swf", "jpg"}));
    EXPECT_THROW(requestOf("copy", {"a", "b", "c", "d", "e", "f"}), Exception);
    EXPECT_THROW(requestOf("write", {"f", "data"}), Exception);
}

TEST(MakeRequest, RefusesBytesThatEndTheRequestOrTheParameter) {
    EXPECT_THROW(requestOf("readText", {"a\x01"}), Exception);
    EXPECT_THROW(requestOf("readText", {"a\nb"}), Exception);
    EXPECT_THROW(requestOf("readText", {"a\r"}), Exception);
    EXPECT_NO_THROW(requestOf("readText", {"a\rb"}));
    EXPECT_THROW(requestOf("write", {"f"}, "a\0b"s), Exception);
    EXPECT_THROW(requestOf("write", {"f"}, "a\x01"), Exception);
}

TEST(MakeRequest, RefusesAParameterThatTheServerWouldTakeForEmpty) {
    EXPECT_NO_THROW(requestOf("readText", {std::string(1023, 'a')}));
    EXPECT_THROW(requestOf("readText", {std::string(1024, 'a')}), Exception);
}

TEST(UsageLine, ShowsWhereDataComesFrom) {
    EXPECT_EQ(usageLine(*findCommand("write")), "write file < data");
    EXPECT_EQ(usageLine(*findCommand("userName")), "userName");
}

TEST(FindCommand, KnowsShutdownAndTellsCasesApart) {
    EXPECT_NE(findCommand("shutdown"), nullptr);
    EXPECT_EQ(findCommand("userdir"), nullptr);
    EXPECT_EQ(commandList().size(), 23U);
}

}  // namespace
}  // namespace corvane::ctl
