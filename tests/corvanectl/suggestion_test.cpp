#include "corvanectl/suggestion.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

TEST(SuggestCommand, LooksPastUpperAndLowerCase) {
    EXPECT_EQ(suggestCommand("listdir"), "listDir");
    EXPECT_EQ(suggestCommand("READTEXT"), "readText");
}

TEST(SuggestCommand, FindsTheNameThatDiffersLeast) {
    EXPECT_EQ(suggestCommand("lisDir"), "listDir");
    EXPECT_EQ(suggestCommand("readTxet"), "readText");
    EXPECT_EQ(suggestCommand("shutdwon"), "shutdown");
    EXPECT_EQ(suggestCommand("hlep"), "");
    EXPECT_EQ(suggestCommand("helo"), "help");
}

TEST(SuggestCommand, HasNothingToSayAboutOtherWords) {
    EXPECT_EQ(suggestCommand(""), "");
    EXPECT_EQ(suggestCommand("x"), "");
    EXPECT_EQ(suggestCommand("frobnicate"), "");
}

TEST(UnknownCommand, AsksWhetherTheNearestWasMeant) {
    EXPECT_EQ(unknownCommand("listdir").message,
              "unknown command 'listdir', did you mean listDir?");
    EXPECT_EQ(unknownCommand("frobnicate").message, "unknown command 'frobnicate', try --help");
}

}  // namespace
}  // namespace corvane::ctl
