#include "corvane-play/browser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvane::play {
namespace {

using Words = std::vector<std::string>;

TEST(BrowserTest, GivesFirefoxAProfileOfItsOwn) {
    EXPECT_EQ(kioskArguments("/usr/bin/firefox-esr", "/tmp/p", "http://a/"),
              (Words{"/usr/bin/firefox-esr", "--no-remote", "--profile", "/tmp/p", "--kiosk",
                     "http://a/"}));
}

TEST(BrowserTest, GivesOthersAProfileOfTheirOwn) {
    const Words words = kioskArguments("/usr/bin/chromium", "/tmp/p", "http://a/");
    EXPECT_NE(std::find(words.begin(), words.end(), "--kiosk"), words.end());
    EXPECT_NE(std::find(words.begin(), words.end(), "--user-data-dir=/tmp/p"), words.end());
    EXPECT_EQ(words.back(), "http://a/");
}

}  // namespace
}  // namespace corvane::play
