#include "corvane-play/request_path.h"

#include <gtest/gtest.h>

#include "corvane-play/percent.h"

namespace corvane::play {
namespace {

using Components = std::vector<std::string>;

TEST(RequestPathTest, TakesAnAddressApartAndDecodesIt) {
    EXPECT_EQ(pathComponents("/a/b%20c.swf?x=/../#y"), (Components{"a", "b c.swf"}));
    EXPECT_EQ(pathComponents("/a/"), (Components{"a", ""}));
    EXPECT_EQ(pathComponents("/"), Components{""});
    EXPECT_EQ(pathComponents("/%C3%A4/a+b"), (Components{"\xC3\xA4", "a+b"}));
}

TEST(RequestPathTest, RefusesEveryWayOut) {
    for (const char* const target :
         {"",      "a",      "*",        "http://127.0.0.1/a", "//a",        "/a//b",   "/.",
          "/..",   "/../a",  "/a/../b",  "/%2e%2e/a",          "/%2E./a",    "/..%2fa", "/a%2Fb",
          "/a\\b", "/a%5cb", "/.hidden", "/a/.git/b",          "/%2ehidden", "/..."}) {
        EXPECT_FALSE(pathComponents(target)) << target;
    }
}

TEST(RequestPathTest, RefusesControlCharactersAndWrongEscapes) {
    for (const char* const target :
         {"/a%00", "/a%0d%0ab", "/a%7f", "/a\tb", "/a%", "/a%2", "/a%zz", "/a%+1", "/%"}) {
        EXPECT_FALSE(pathComponents(target)) << target;
    }
}

TEST(RequestPathTest, DecodesOnce) {
    EXPECT_EQ(pathComponents("/%252e%252e"), Components{"%2e%2e"});
}

TEST(PercentTest, EscapesWhatItDecodes) {
    const std::string name = "a b\"<&>%/?#\xC3\xA4.swf";
    EXPECT_EQ(decodePercent(escapeComponent(name)), name);
    EXPECT_EQ(escapeComponent("a b/\xC3"), "a%20b%2F%C3");
}

}  // namespace
}  // namespace corvane::play
