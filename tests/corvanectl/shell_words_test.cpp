#include "corvanectl/shell_words.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

using Words = std::vector<std::string>;

Words wordsOf(std::string_view line) { return splitWords(line).words; }

TEST(SplitWords, SeparatesAtBlanks) {
    EXPECT_EQ(wordsOf(""), Words{});
    EXPECT_EQ(wordsOf("  listDir \t /tmp "), (Words{"listDir", "/tmp"}));
}

TEST(SplitWords, KeepsWhatIsQuoted) {
    EXPECT_EQ(wordsOf("a 'b c' \"d 'e\" f\"g\"'h'"), (Words{"a", "b c", "d 'e", "fgh"}));
    EXPECT_EQ(wordsOf("'' \"\""), (Words{"", ""}));
}

TEST(SplitWords, TakesABackslashAsAShellDoes) {
    EXPECT_EQ(wordsOf(R"(a\ b \' \\)"), (Words{"a b", "'", "\\"}));
    EXPECT_EQ(wordsOf(R"("a\"b\\c\d" 'e\f')"), (Words{R"(a"b\c\d)", R"(e\f)"}));
    EXPECT_EQ(wordsOf("a\\"), Words{"a\\"});
}

TEST(SplitWords, TellsHowTheLineEnds) {
    EXPECT_EQ(splitWords("a 'b").open, Quote::Single);
    EXPECT_EQ(splitWords("a \"b'").open, Quote::Double);
    EXPECT_EQ(splitWords("a 'b'").open, Quote::None);
    EXPECT_TRUE(splitWords("").atNextWord);
    EXPECT_TRUE(splitWords("a ").atNextWord);
    EXPECT_FALSE(splitWords("a \\ ").atNextWord);
    EXPECT_EQ(splitWords("ab 'c d").lastBegin, 3U);
}

TEST(Quoted, IsOneWordAgain) {
    for (const char* word : {"a", "a b", "it's", "\"", "\\", "a\tb"}) {
        EXPECT_EQ(wordsOf(quoted(word)), Words{word});
    }
    EXPECT_EQ(quoted("/a b/"), "/a\\ b/");
}

}  // namespace
}  // namespace corvane::ctl
