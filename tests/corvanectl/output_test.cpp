#include "corvanectl/output.h"

#include <gtest/gtest.h>

#include <sstream>

namespace corvane::ctl {
namespace {

ReplyDetail detail(const std::string& id, const std::string& value, bool isText = false) {
    ReplyDetail result;
    result.id = id;
    result.value = value;
    result.isText = isText;
    return result;
}

std::string printed(const std::vector<ReplyDetail>& details) {
    Reply reply;
    reply.ok = true;
    reply.details = details;
    std::ostringstream out;
    printDetails(reply, out);
    return out.str();
}

TEST(PrintDetails, PrintsASingleValueOnALine) {
    EXPECT_EQ(printed({detail("value", "/home/x")}), "/home/x\n");
}

TEST(PrintDetails, AddsNothingToAText) {
    EXPECT_EQ(printed({detail("text", "a\nb", true)}), "a\nb");
}

TEST(PrintDetails, PrintsEntriesOneOnEachLine) {
    EXPECT_EQ(printed({detail("directory", "sub/"), detail("file", "x")}), "sub/\nx\n");
}

TEST(PrintDetails, NamesSeveralValues) {
    EXPECT_EQ(printed({detail("width", "800"), detail("height", "600")}),
              "width=800\nheight=600\n");
}

TEST(DescribeFailure, TellsErrorNumberAndHint) {
    Reply reply;
    EXPECT_EQ(describeFailure("copy", reply), "copy: FAILED; the server's log tells why");
    reply.errnoValue = 2;
    reply.hint = "/x";
    EXPECT_EQ(describeFailure("write", reply),
              "write: FAILED, error 2 (No such file or directory), /x; the server's log tells why");
}

TEST(DescribeFailure, TakesTheErrorMarkOfAStreamForNoErrorNumber) {
    Reply reply;
    reply.errnoValue = 1;
    EXPECT_EQ(describeFailure("write", reply),
              "write: FAILED, error 1 (the data could not be written); the server's log tells why");
}

}  // namespace
}  // namespace corvane::ctl
