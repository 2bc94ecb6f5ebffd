#include "corvanectl/reply.h"

#include <gtest/gtest.h>

#include "support/reply.h"
#include "text/exception.h"

namespace corvane::ctl {
namespace {

using test::failure;
using test::replyText;
using test::success;
using test::textDetail;

TEST(ParseReply, TellsSuccessFromFailure) {
    EXPECT_TRUE(parseReply(success("x")).ok);
    EXPECT_FALSE(parseReply(failure("x")).ok);
}

TEST(ParseReply, ReadsErrnoAndHint) {
    const Reply reply = parseReply(replyText("x", "FAILED", R"( errno="2" hint="a/b:c")", ""));
    EXPECT_EQ(reply.errnoValue, 2);
    EXPECT_EQ(reply.hint, "a/b:c");
    EXPECT_FALSE(parseReply(failure("x")).errnoValue.has_value());
}

TEST(ParseReply, ReadsEveryAttributeOfADetail) {
    const Reply reply = parseReply(
        success("x", R"(<Detail id="file" extra="rh" date="today" size="7" Value="name" />)"));
    ASSERT_EQ(reply.details.size(), 1U);
    const ReplyDetail& detail = reply.details[0];
    EXPECT_EQ(detail.id, "file");
    EXPECT_EQ(detail.extra, "rh");
    EXPECT_EQ(detail.date, "today");
    EXPECT_EQ(detail.size, "7");
    EXPECT_EQ(detail.value, "name");
    EXPECT_FALSE(detail.isText);
}

TEST(ParseReply, UnescapesElementText) {
    const Reply reply = parseReply(success("x", textDetail("a&lt;b&gt;&amp;lt;")));
    ASSERT_EQ(reply.details.size(), 1U);
    EXPECT_TRUE(reply.details[0].isText);
    EXPECT_EQ(reply.details[0].value, "a<b>&lt;");
}

TEST(ParseReply, KeepsMarkupInNamesAsItIs) {
    const Reply reply =
        parseReply(replyText("x", "SUCCESS", R"( hint="/a"><b/")",
                             R"(<Detail id="file" extra="" size="0" Value="a" /><&amp;.txt" />)"
                             R"(<Detail id="file" extra="" size="0" Value="b" />)"));
    EXPECT_EQ(reply.hint, "/a\"><b/");
    ASSERT_EQ(reply.details.size(), 2U);
    EXPECT_EQ(reply.details[0].value, "a\" /><&amp;.txt");
    EXPECT_EQ(reply.details[1].value, "b");
}

TEST(ParseReply, KeepsTheEndsOwnTextInAHint) {
    const std::string end = "\"></Header></CorvaneMsg>";
    for (const std::string& hint : {"a" + end + "b", end, end + end}) {
        EXPECT_EQ(parseReply(failure("x", hint)).hint, hint);
    }
}

TEST(ParseReply, RefusesWhatFollowsTheEnd) {
    for (const std::string& details : {std::string(), textDetail("text")}) {
        const std::string whole = success("x", details);
        EXPECT_NO_THROW(parseReply(whole));
        EXPECT_THROW(parseReply(whole + " "), Exception);
        EXPECT_THROW(parseReply(whole + whole), Exception);
    }
}

TEST(ParseReply, RefusesWhatIsNoReply) {
    const std::string whole = success("x", textDetail("text"), "h");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THROW(parseReply(whole.substr(0, size)), Exception) << size;
    }
    EXPECT_THROW(parseReply("HTTP/1.1 200 OK"), Exception);
}

TEST(UnescapeXml, LeavesOtherAmpersandsAlone) {
    EXPECT_EQ(unescapeXml("&quot;&apos; & &nbsp; &am"), "\"' & &nbsp; &am");
}

}  // namespace
}  // namespace corvane::ctl
