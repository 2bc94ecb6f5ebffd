#include "corvane-play/options.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace corvane::play {
namespace {

Options parse(std::initializer_list<const char*> words) {
    return parseOptions(std::span(words.begin(), words.size()));
}

TEST(OptionsTest, PlaysWhatItIsGiven) {
    const Options options = parse({"game.swf"});
    EXPECT_EQ(options.action, Options::Action::Play);
    EXPECT_EQ(options.subject, "game.swf");
    EXPECT_EQ(options.browser, Options::Browser::Default);
    EXPECT_FALSE(options.stay || options.scale || options.port);
}

TEST(OptionsTest, TakesOptionsInAnyPlaceAndForm) {
    const Options options =
        parse({"--kiosk", "--allow", "a:1", "dir", "--allow=b:2", "--stay", "--scale",
               "--flashvars=a=b&c=d", "--port", "8000", "--config=/etc/c"});
    EXPECT_EQ(options.browser, Options::Browser::Kiosk);
    EXPECT_EQ(options.subject, "dir");
    EXPECT_EQ(options.allowedTargets, (std::vector<Target>{{"a", 1}, {"b", 2}}));
    EXPECT_TRUE(options.stay && options.scale);
    EXPECT_EQ(options.flashvars, (Flashvars{{"a", "b"}, {"c", "d"}}));
    EXPECT_EQ(options.port, 8000);
    EXPECT_EQ(options.configuration, "/etc/c");
}

TEST(OptionsTest, TakesANameThatBeginsWithADashBehindTwoDashes) {
    EXPECT_EQ(parse({"--no-open", "--", "--kiosk"}).subject, "--kiosk");
}

TEST(OptionsTest, ServesABridgeForAllowedOrigins) {
    const Options options = parse({"--bridge", "--allow-origin", "https://a.example"});
    EXPECT_EQ(options.action, Options::Action::Bridge);
    EXPECT_EQ(options.allowedOrigins, std::vector<std::string>{"https://a.example"});
}

TEST(OptionsTest, NeedsNothingElseForHelpAndVersion) {
    EXPECT_EQ(parse({"-h"}).action, Options::Action::Help);
    EXPECT_EQ(parse({"--help"}).action, Options::Action::Help);
    EXPECT_EQ(parse({"--version"}).action, Options::Action::Version);
}

TEST(OptionsTest, RefusesWhatItCannotFollow) {
    const std::initializer_list<std::initializer_list<const char*>> lines = {
        {},
        {""},
        {"a", "b"},
        {"--unknown", "a"},
        {"-x", "a"},
        {"--allow"},
        {"--allow", "a", "x"},
        {"--stay=1", "a"},
        {"--port", "0", "a"},
        {"--port=99999", "a"},
        {"--flashvars", "=", "a"},
        {"--bridge"},
        {"--bridge", "--allow-origin", "*"},
        {"--bridge", "--allow-origin", "https://a", "movie.swf"},
        {"--allow-origin", "https://a", "movie.swf"}};
    for (const auto& line : lines) {
        EXPECT_THROW(parse(line), UsageError) << (line.size() == 0 ? "" : *line.begin());
    }
}

}  // namespace
}  // namespace corvane::play
