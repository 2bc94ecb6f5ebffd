#include "app/settings.h"

#include <gtest/gtest.h>

#include "support/scratch_directory.h"

namespace corvane {
namespace {

using test::ScratchDirectory;

class SettingsTest : public testing::Test {
  protected:
    Settings settings() const { return Settings(store); }

    Properties store{false};
};

TEST_F(SettingsTest, HaveDefaults) {
    const Settings defaults = settings();
    EXPECT_EQ(defaults.port, 54321);
    EXPECT_EQ(defaults.inactivity, 0);
    EXPECT_TRUE(defaults.console);
    EXPECT_EQ(defaults.currentDirectory, "");
    EXPECT_EQ(defaults.address, "127.0.0.1");
    EXPECT_FALSE(defaults.closeOnFatal);
    EXPECT_FALSE(defaults.debugRequestRead);
}

TEST_F(SettingsTest, HaveEveryFurtherKeyOffByDefault) {
    const Settings defaults = settings();
    EXPECT_EQ(defaults.requestTimeout, 0);
    EXPECT_EQ(defaults.maxRequest, 0);
    EXPECT_EQ(defaults.toolTimeout, 0);
    EXPECT_FALSE(defaults.allowHttp);
    EXPECT_TRUE(defaults.commands.empty());
}

TEST_F(SettingsTest, AreReadInAnyLetterCase) {
    store.setProperty("port", "5000");
    store.setProperty("Inactivity", "7");
    store.setProperty("console", "false");
    store.setProperty("CURRDIR", "/somewhere");
    store.setProperty("address", "any");
    store.setProperty("closeOnFatal", "true");
    store.setProperty("debugrequestread", "1");
    const Settings read = settings();
    EXPECT_EQ(read.port, 5000);
    EXPECT_EQ(read.inactivity, 7);
    EXPECT_FALSE(read.console);
    EXPECT_EQ(read.currentDirectory, "/somewhere");
    EXPECT_EQ(read.address, "any");
    EXPECT_TRUE(read.closeOnFatal);
    EXPECT_TRUE(read.debugRequestRead);
}

TEST_F(SettingsTest, FallBackToTheDefaultForAMalformedNumber) {
    store.setProperty("PORT", "abc");
    store.setProperty("CONSOLE", "maybe");
    EXPECT_EQ(settings().port, 54321);
    EXPECT_TRUE(settings().console);
}

TEST_F(SettingsTest, CountLimitsBelowZeroAsNone) {
    store.setProperty("REQUESTTIMEOUT", "-1");
    store.setProperty("MAXREQUEST", "-5");
    store.setProperty("TOOLTIMEOUT", "-2");
    EXPECT_EQ(settings().requestTimeout, 0);
    EXPECT_EQ(settings().maxRequest, 0);
    EXPECT_EQ(settings().toolTimeout, 0);
}

TEST_F(SettingsTest, SplitTheCommandListAtCommas) {
    store.setProperty("COMMANDS", " userDir, listDir ,,shutdown");
    EXPECT_EQ(settings().commands, (std::vector<std::string>{"userDir", "listDir", "shutdown"}));
    store.setProperty("COMMANDS", " , ");
    EXPECT_TRUE(settings().commands.empty());
}

TEST_F(SettingsTest, AreHandedToTheServer) {
    store.setProperty("PORT", "5000");
    store.setProperty("INACTIVITY", "7");
    store.setProperty("ADDRESS", "127.0.0.2");
    store.setProperty("CLOSEONFATAL", "true");
    store.setProperty("DEBUGREQUESTREAD", "true");
    store.setProperty("REQUESTTIMEOUT", "3");
    store.setProperty("MAXREQUEST", "1000");
    store.setProperty("ALLOWHTTP", "true");
    store.setProperty("COMMANDS", "log");
    Server target;
    settings().apply(target);
    EXPECT_EQ(target.port, 5000);
    EXPECT_EQ(target.inactivity, 7);
    EXPECT_EQ(target.address, "127.0.0.2");
    EXPECT_TRUE(target.closeOnFatal);
    EXPECT_TRUE(target.debugRequestRead);
    EXPECT_EQ(target.requestTimeout, 3);
    EXPECT_EQ(target.maxRequest, 1000);
    EXPECT_TRUE(target.allowHttp);
    EXPECT_EQ(target.allowedCommands, std::vector<std::string>{"log"});
}

TEST_F(SettingsTest, LeaveTheServersAddressAloneForAny) {
    Server target;
    target.address = "its own";
    store.setProperty("ADDRESS", "any");
    settings().apply(target);
    EXPECT_EQ(target.address, "its own");
    store.setProperty("ADDRESS", "Any");
    settings().apply(target);
    EXPECT_EQ(target.address, "Any");
    store.setProperty("ADDRESS", "");
    settings().apply(target);
    EXPECT_EQ(target.address, "");
}

class ConfigurationFileTest : public SettingsTest {
  protected:
    bool load() { return loadConfiguration(store, scratch.path()); }

    ScratchDirectory scratch;
};

TEST_F(ConfigurationFileTest, IsTheFirstOneWhenBothAreThere) {
    scratch.file("corvane.conf", "PORT=1\n");
    scratch.file("corvane.cfg", "PORT=2\nINACTIVITY=3\n");
    EXPECT_TRUE(load());
    EXPECT_EQ(settings().port, 1);
    EXPECT_EQ(settings().inactivity, 0);
}

TEST_F(ConfigurationFileTest, IsTheOtherOneWhenTheFirstIsMissing) {
    scratch.file("corvane.cfg", "PORT=2\n");
    EXPECT_TRUE(load());
    EXPECT_EQ(settings().port, 2);
}

TEST_F(ConfigurationFileTest, MayBeMissing) {
    EXPECT_FALSE(load());
    EXPECT_EQ(settings().port, 54321);
}

TEST_F(ConfigurationFileTest, MayBeEmpty) {
    scratch.file("corvane.conf");
    scratch.file("corvane.cfg", "PORT=2\n");
    EXPECT_TRUE(load());
    EXPECT_EQ(settings().port, 54321);
}

}  // namespace
}  // namespace corvane
