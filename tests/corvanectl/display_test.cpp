#include "corvanectl/display.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

TEST(Visible, LeavesWhatCanBeShownAlone) {
    EXPECT_EQ(visible("a b/\xc3\xa9\xe6\x97\xa5"), "a b/\xc3\xa9\xe6\x97\xa5");
}

TEST(Visible, ShowsControlCharactersAndBytesThatAreNone) {
    EXPECT_EQ(visible("\x1b[2J\n\x7f"), "\\x1b[2J\\x0a\\x7f");
    EXPECT_EQ(visible("a\xff\xc3"), "a\\xff\\xc3");
    EXPECT_EQ(visible("\xc2\x9b"
                      "2J"),
              "\\u009b2J");
}

TEST(Visible, ShowsWhatTurnsTheWritingAround) {
    EXPECT_EQ(visible("a\xe2\x80\xae"
                      "fdp"),
              "a\\u202efdp");
}

TEST(DisplayWidth, CountsColumns) {
    EXPECT_EQ(displayWidth(""), 0U);
    EXPECT_EQ(displayWidth("abc"), 3U);
    EXPECT_EQ(displayWidth("\xc3\xa9"), 1U);
    EXPECT_EQ(displayWidth("e\xcc\x81"), 1U);
    EXPECT_EQ(displayWidth("\xe6\x97\xa5\xe6\x9c\xac"), 4U);
    EXPECT_EQ(displayWidth("\xf0\x9f\x98\x80"), 2U);
}

}  // namespace
}  // namespace corvane::ctl
