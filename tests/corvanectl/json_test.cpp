#include "corvanectl/json.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

TEST(JsonString, EscapesWhatJsonWantsEscaped) {
    EXPECT_EQ(jsonString(""), "\"\"");
    EXPECT_EQ(jsonString("a\"b\\c/<\xc3\xa9>"), "\"a\\\"b\\\\c/<\xc3\xa9>\"");
    EXPECT_EQ(jsonString(std::string_view("\n\t\x1b\x7f\0", 5)),
              "\"\\u000a\\u0009\\u001b\\u007f\\u0000\"");
}

TEST(JsonString, ReplacesEveryByteThatIsNoUtf8) {
    EXPECT_EQ(jsonString("a\xff\xc3z"), "\"a\\ufffd\\ufffdz\"");
    EXPECT_EQ(jsonString("\xed\xa0\x80"), "\"\\ufffd\\ufffd\\ufffd\"");
}

TEST(ToJson, HasCommandResultAndDetails) {
    Reply reply;
    reply.ok = true;
    EXPECT_EQ(toJson("write", reply), R"({"command":"write","result":"SUCCESS","details":[]})");
    reply.hint = "/d/";
    reply.details = {{"directory", "sub/", "d", "", "", false}, {"file", "x", "", "", "0", false}};
    EXPECT_EQ(toJson("listDir", reply),
              R"({"command":"listDir","result":"SUCCESS","hint":"/d/","details":[)"
              R"({"id":"directory","extra":"d","value":"sub/"},)"
              R"({"id":"file","size":"0","value":"x"}]})");
}

TEST(ToJson, TellsOfAFailure) {
    Reply reply;
    reply.errnoValue = 2;
    EXPECT_EQ(toJson("write", reply),
              R"({"command":"write","result":"FAILED","errno":2,"details":[]})");
}

TEST(ToJson, KeepsBytesThatAreNoUtf8BesideTheirReplacement) {
    Reply reply;
    reply.ok = true;
    reply.details = {{"file", "\xff\x1f", "", "", "", false}};
    EXPECT_EQ(toJson("listDir", reply),
              R"({"command":"listDir","result":"SUCCESS","details":[)"
              R"({"id":"file","value":"\ufffd\u001f","valueHex":"ff1f"}]})");
}

}  // namespace
}  // namespace corvane::ctl
