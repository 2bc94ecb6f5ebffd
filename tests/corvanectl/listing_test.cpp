#include "corvanectl/listing.h"

#include <gtest/gtest.h>

#include <sstream>

namespace corvane::ctl {
namespace {

std::vector<ReplyDetail> files(const std::vector<std::string>& names) {
    std::vector<ReplyDetail> details;
    for (const std::string& name : names) {
        details.push_back({"file", name, "", "", "0", false});
    }
    return details;
}

std::string columns(const std::vector<std::string>& names, std::size_t width) {
    std::ostringstream out;
    printColumns(files(names), width, out);
    return out.str();
}

TEST(PrintColumns, FillsTheWidthDownTheColumns) {
    EXPECT_EQ(columns({"aa", "b", "c", "dddd"}, 14), "aa  b  c  dddd\n");
    EXPECT_EQ(columns({"aa", "b", "c", "dddd"}, 13), "aa  c\nb   dddd\n");
    EXPECT_EQ(columns({"aa", "b", "c", "dddd"}, 7), "aa\nb\nc\ndddd\n");
}

TEST(PrintColumns, PutsNamesThatAreTooLongOnLinesOfTheirOwn) {
    EXPECT_EQ(columns({"a", "bbbbbbbb", "c"}, 4), "a\nbbbbbbbb\nc\n");
    EXPECT_EQ(columns({"abc"}, 1), "abc\n");
}

TEST(PrintColumns, AlignsByColumnsNotBytes) {
    EXPECT_EQ(columns({"\xc3\xa9", "b", "\xe6\x97\xa5", "d"}, 6), "\xc3\xa9  \xe6\x97\xa5\nb  d\n");
    EXPECT_EQ(columns({"\x1b", "b", "c"}, 8), "\\x1b  c\nb\n");
}

TEST(PrintLong, AlignsWhatIsKnown) {
    const std::vector<ReplyDetail> entries{{"directory", "sub/", "d", "", "", false},
                                           {"file", "x\n", "hr", "", "0", false},
                                           {"file", "y", "", "2026-01-02", "12", false}};
    std::ostringstream out;
    printLong(entries, true, out);
    EXPECT_EQ(out.str(),
              "directory  d    -  -           sub/\nfile       hr   -  -           x\\x0a\n"
              "file       -   12  2026-01-02  y\n");
    std::ostringstream raw;
    printLong(std::span(entries).subspan(1, 1), false, raw);
    EXPECT_EQ(raw.str(), "file  hr  -  -  x\n\n");
}

TEST(IsListing, WantsEntriesAndNothingElse) {
    Reply reply;
    EXPECT_FALSE(isListing(reply));
    reply.details = files({"a"});
    EXPECT_TRUE(isListing(reply));
    reply.details.push_back({"value", "x", "", "", "", false});
    EXPECT_FALSE(isListing(reply));
}

}  // namespace
}  // namespace corvane::ctl
