#include "reply/reply_document.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "support/reply.h"

namespace corvane {
namespace {

// A text of this size is not copied into the document.
constexpr std::size_t largeSize = std::size_t{64} * 1024;

std::string finished(ReplyDocument& document) {
    std::string text;
    for (const std::string_view piece : document.finish()) {
        text += piece;
    }
    EXPECT_TRUE(text.ends_with('\0'));
    text.pop_back();
    return text;
}

TEST(ReplyDocument, HoldsNothingOfTheLargeOneBefore) {
    const CorvaneDetail large("text", std::string(largeSize, 'x'), true);
    ReplyDocument document;
    document.begin("readText", true, std::nullopt, "");
    document.append(large);
    EXPECT_TRUE(finished(document) == test::success("readText", test::textDetail(large.value)));
    document.begin("log", true, std::nullopt, "");
    EXPECT_TRUE(finished(document) == test::success("log"));
}

TEST(ReplyDocument, HoldsNothingOfALargeOneThatWasGivenUp) {
    const CorvaneDetail large("text", std::string(largeSize, 'x'), true);
    ReplyDocument document;
    document.begin("readText", true, std::nullopt, "");
    document.append(large);
    document.begin("readText", false, std::nullopt, "");
    EXPECT_TRUE(finished(document) == test::failure("readText"));
}

}  // namespace
}  // namespace corvane
