#include "text/tokenizer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvane {
namespace {

std::vector<std::string> tokensOf(StringTokenizer tokenizer) {
    std::vector<std::string> tokens;
    while (tokenizer.hasNextToken()) {
        tokens.push_back(tokenizer.nextToken());
    }
    return tokens;
}

using Tokens = std::vector<std::string>;

TEST(StringTokenizer, SkipsDelimitersAroundTheTokens) {
    StringTokenizer tokenizer(" a  b ", " ");
    EXPECT_TRUE(tokenizer.hasNextToken());
    EXPECT_EQ(tokenizer.nextToken(), "a");
    EXPECT_TRUE(tokenizer.hasNextToken());
    EXPECT_EQ(tokenizer.nextToken(), "b");
    EXPECT_FALSE(tokenizer.hasNextToken());
}

TEST(StringTokenizer, SplitsAtAnyCharacterOfTheSet) {
    EXPECT_EQ(tokensOf({"a,b;c", ",;"}), (Tokens{"a", "b", "c"}));
}

TEST(StringTokenizer, HasNoTokensInEmptyTexts) {
    EXPECT_EQ(tokensOf({}), Tokens{});
    EXPECT_EQ(tokensOf({"", " "}), Tokens{});
    EXPECT_EQ(tokensOf({"   ", " "}), Tokens{});
}

TEST(StringTokenizer, GivesTheWholeTextWithoutDelimiters) {
    EXPECT_EQ(tokensOf({"a b", ""}), (Tokens{"a b"}));
}

TEST(StringTokenizer, GivesEmptyStringsAfterATokenThatRanToTheEnd) {
    StringTokenizer tokenizer("ab", ",");
    EXPECT_EQ(tokenizer.nextToken(), "ab");
    EXPECT_FALSE(tokenizer.hasNextToken());
    EXPECT_EQ(tokenizer.nextToken(), "");
    EXPECT_EQ(tokenizer.nextToken(), "");
}

TEST(StringTokenizer, GivesEmptyStringsWhenOnlyDelimitersRemain) {
    StringTokenizer tokenizer("ab,,", ",");
    EXPECT_EQ(tokenizer.nextToken(), "ab");
    EXPECT_EQ(tokenizer.nextToken(), "");
    EXPECT_EQ(tokenizer.nextToken(), "");
    EXPECT_FALSE(tokenizer.hasNextToken());
}

TEST(StringTokenizer, StartsOverAfterReset) {
    StringTokenizer tokenizer("a b", " ");
    tokenizer.nextToken();
    tokenizer.nextToken();
    tokenizer.reset();
    EXPECT_EQ(tokensOf(tokenizer), (Tokens{"a", "b"}));
}

TEST(StringTokenizer, StartsOverWithAnotherText) {
    StringTokenizer tokenizer("a b", " ");
    tokenizer.nextToken();
    tokenizer.set("c-d e", "-");
    EXPECT_EQ(tokensOf(tokenizer), (Tokens{"c", "d e"}));
}

}  // namespace
}  // namespace corvane
