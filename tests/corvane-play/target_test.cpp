#include "corvane-play/target.h"

#include <gtest/gtest.h>

namespace corvane::play {
namespace {

TEST(TargetTest, ReadsAHostAndAPort) {
    EXPECT_EQ(parseTarget("Example.com:80"), (Target{"example.com", 80}));
    EXPECT_EQ(parseTarget("10.0.0.1:65535"), (Target{"10.0.0.1", 65535}));
    EXPECT_EQ(parseTarget("[::1]:7"), (Target{"::1", 7}));
}

TEST(TargetTest, RefusesWhatIsNoHostOrNoPort) {
    for (const char* const text :
         {"", ":", "host", "host:", ":80", "host:0", "host:65536", "host:-1", "host:+1", "host: 1",
          "host:1x", "a b:1", "a/b:1", "[]:1", "[host]:1", "::1:7", "user@host:1", "h\"t:1"}) {
        EXPECT_FALSE(parseTarget(text)) << text;
    }
    EXPECT_FALSE(parseTarget(std::string(254, 'a') + ":1"));
}

TEST(TargetTest, WritesWhatItReads) {
    for (const char* const text : {"example.com:80", "[fe80::1]:9"}) {
        EXPECT_EQ(toString(*parseTarget(text)), text);
    }
}

}  // namespace
}  // namespace corvane::play
