#include "corvane-play/flashvars.h"

#include <gtest/gtest.h>

namespace corvane::play {
namespace {

TEST(FlashvarsTest, ReadsNamesAndValues) {
    EXPECT_EQ(parseFlashvars("a=b&c=d+e%26f=g&h"),
              (Flashvars{{"a", "b"}, {"c", "d e&f=g"}, {"h", ""}}));
    EXPECT_EQ(parseFlashvars(""), Flashvars{});
}

TEST(FlashvarsTest, RefusesWrongEscapesAndEmptyNames) {
    for (const char* const text : {"a=%", "%zz=1", "=b", "a=1&&b=2", "&"}) {
        EXPECT_FALSE(parseFlashvars(text)) << text;
    }
}

TEST(FlashvarsTest, WritesTextsThatCannotEndAScript) {
    EXPECT_EQ(jsonString("a\"\\\n</script>\x01"), R"("a\"\\\u000a\u003c/script>\u0001")");
    EXPECT_EQ(jsonObject({{"a", "b"}, {"c\"", ""}}), R"({"a":"b","c\"":""})");
    EXPECT_EQ(jsonObject({}), "{}");
}

}  // namespace
}  // namespace corvane::play
