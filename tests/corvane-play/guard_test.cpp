#include "corvane-play/guard.h"

#include <gtest/gtest.h>

#include <set>

namespace corvane::play {
namespace {

constexpr std::uint16_t port = 8080;

TEST(GuardTest, MakesSecretsOf128BitsThatDiffer) {
    std::set<std::string> secrets;
    for (int i = 0; i < 100; ++i) {
        secrets.insert(makeSecret());
    }
    EXPECT_EQ(secrets.size(), 100U);
    EXPECT_EQ(secrets.begin()->size(), 32U);
    EXPECT_EQ(secrets.begin()->find_first_not_of("0123456789abcdef"), std::string::npos);
}

TEST(GuardTest, TellsSecretsApart) {
    EXPECT_TRUE(isSameSecret("0123", "0123"));
    for (const char* const wrong : {"", "012", "01234", "0124", "1123"}) {
        EXPECT_FALSE(isSameSecret(wrong, "0123")) << wrong;
    }
}

TEST(GuardTest, KnowsItsOwnHost) {
    for (const char* const host : {"127.0.0.1:8080", "localhost:8080", "LocalHost:8080"}) {
        EXPECT_TRUE(isOwnHost(host, port)) << host;
    }
    for (const char* const host :
         {"", "127.0.0.1", "127.0.0.1:80", "127.0.0.1:80800", "evil.example:8080",
          "localhost.:8080", "127.0.0.1:8080.evil.example", "evil@127.0.0.1:8080", "[::1]:8080",
          " localhost:8080"}) {
        EXPECT_FALSE(isOwnHost(host, port)) << host;
    }
}

TEST(GuardTest, AllowsTheOriginOfThePageAlone) {
    const std::string host = "localhost:8080";
    EXPECT_TRUE(isAllowedOrigin("http://localhost:8080", host, true, {}));
    for (const char* const origin :
         {"", "null", "localhost:8080", "https://localhost:8080", "http://localhost",
          "http://localhost:80", "http://localhost:8080/", "http://127.0.0.1:8080",
          "http://localhost:8080.evil.example"}) {
        EXPECT_FALSE(isAllowedOrigin(origin, host, true, {})) << origin;
    }
}

TEST(GuardTest, AllowsOtherOriginsOnDemandAndThenNotItsOwn) {
    const std::vector<std::string> allowed{"https://a.example", "https://b.example:8443"};
    EXPECT_TRUE(isAllowedOrigin("https://b.example:8443", "localhost:8080", false, allowed));
    for (const char* const origin : {"http://localhost:8080", "http://a.example",
                                     "https://a.example:443", "https://b.example"}) {
        EXPECT_FALSE(isAllowedOrigin(origin, "localhost:8080", false, allowed)) << origin;
    }
}

TEST(GuardTest, KnowsTheFormOfAnOrigin) {
    for (const char* const text : {"https://www.example.com", "http://127.0.0.1:8000",
                                   "app://local", "chrome-extension://abcdef"}) {
        EXPECT_TRUE(isOrigin(text)) << text;
    }
    for (const char* const text :
         {"", "*", "null", "www.example.com", "://a", "https://", "https://a/", "https://a/b",
          "https://A.example", "https://a b", "https://*.example", "https://u@a", "HTTPS://a"}) {
        EXPECT_FALSE(isOrigin(text)) << text;
    }
}

}  // namespace
}  // namespace corvane::play
