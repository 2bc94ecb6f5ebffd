#include "corvane-play/site.h"

#include <gtest/gtest.h>

namespace corvane::play {
namespace {

using Kind = SocketRequest::Kind;

class SiteTest : public ::testing::Test {
  protected:
    SiteTest() {
        site.key = "key";
        site.token = "token";
        site.targets = {{"127.0.0.1", 5000}, {"::1", 7}};
    }
    Kind kindOf(const std::string& target) const { return parseSocketRequest(target, site).kind; }

    Site site;
};

TEST_F(SiteTest, KnowsTheAddressesOfItsBridges) {
    for (const Target& target : site.targets) {
        const SocketRequest request = parseSocketRequest(bridgePath(site, target), site);
        EXPECT_EQ(request.kind, Kind::Bridge);
        EXPECT_EQ(request.target, target);
    }
    EXPECT_EQ(kindOf("/alive/token"), Kind::Alive);
}

TEST_F(SiteTest, KnowsNoOtherAddressAndNoOtherTarget) {
    for (const char* const target :
         {"", "/", "/alive", "/alive/", "/alive/toke", "/alive/key", "/alive/token/",
          "/bridge/token", "/bridge/token/127.0.0.1", "/bridge/key/127.0.0.1/5000",
          "/bridge/token/127.0.0.1/5001", "/bridge/token/127.0.0.2/5000",
          "/bridge/token/127.0.0.1/05000x", "/bridge/token/127.0.0.1/5000/",
          "/key/bridge/token/127.0.0.1/5000"}) {
        EXPECT_EQ(kindOf(target), Kind::Unknown) << target;
    }
}

TEST(WithScriptTest, PutsTheScriptBeforeAllOthers) {
    const std::string script = "<script src=\"/k/corvane-play.js\"></script>";
    EXPECT_EQ(withScript("<html><head a='b'>x</head>", "k"),
              "<html><head a='b'>" + script + "x</head>");
    EXPECT_EQ(withScript("<!DOCTYPE html><p>x", "k"), "<!DOCTYPE html>" + script + "<p>x");
    EXPECT_EQ(withScript("<html><header>x", "k"), "<html>" + script + "<header>x");
    EXPECT_EQ(withScript("x", "k"), script + "x");
    EXPECT_EQ(withScript("", "k"), script);
}

TEST(WithScriptTest, LeavesAPageThatHasItAlone) {
    const std::string page = "<head><script src=\"corvane-play.js\"></script>";
    EXPECT_EQ(withScript(page, "k"), page);
}

}  // namespace
}  // namespace corvane::play
