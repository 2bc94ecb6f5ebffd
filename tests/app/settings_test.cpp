#include "app/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/scratch_directory.h"
#include "support/thrown.h"
#include "text/exception.h"

namespace corvane {
namespace {

using std::string_literals::operator""s;
using test::ScratchDirectory;

class SettingsTest : public testing::Test {
  protected:
    Settings settings() const { return Settings(store); }

    /// What Settings throws; empty when they can be read.
    std::string refusal() const {
        try {
            settings();
        } catch (const ConfigureFailure& e) {
            return e.what();
        }
        return "";
    }

    Properties store{false};
};

TEST_F(SettingsTest, HaveDefaults) {
    const Settings defaults = settings();
    EXPECT_EQ(defaults.server.port, 54321);
    EXPECT_EQ(defaults.server.inactivity, 0);
    EXPECT_TRUE(defaults.console);
    EXPECT_EQ(defaults.currentDirectory, "");
    EXPECT_EQ(defaults.server.address, "127.0.0.1");
    EXPECT_FALSE(defaults.server.closeOnFatal);
    EXPECT_FALSE(defaults.server.debugRequestRead);
}

TEST_F(SettingsTest, HaveEveryFurtherKeyOffByDefault) {
    const Settings defaults = settings();
    EXPECT_EQ(defaults.server.requestTimeout, 0);
    EXPECT_EQ(defaults.server.maxRequest, 0);
    EXPECT_EQ(defaults.toolTimeout, 0);
    EXPECT_FALSE(defaults.server.allowHttp);
    EXPECT_EQ(defaults.server.allowedCommands, std::nullopt);
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
    EXPECT_EQ(read.server.port, 5000);
    EXPECT_EQ(read.server.inactivity, 7);
    EXPECT_FALSE(read.console);
    EXPECT_EQ(read.currentDirectory, "/somewhere");
    EXPECT_EQ(read.server.address, "any");
    EXPECT_TRUE(read.server.closeOnFatal);
    EXPECT_TRUE(read.server.debugRequestRead);
}

TEST_F(SettingsTest, FallBackToTheDefaultForAMalformedNumber) {
    store.setProperty("PORT", "abc");
    store.setProperty("CONSOLE", "maybe");
    EXPECT_EQ(settings().server.port, 54321);
    EXPECT_TRUE(settings().console);
}

TEST_F(SettingsTest, RefuseANumberThatIsNoPortAndSayWhatIsOne) {
    for (const char* port : {"65536", "-1", "99999999999"}) {
        store.setProperty("PORT", port);
        EXPECT_EQ(refusal(),
                  "PORT="s + port + " is not possible: it must be a number from 0 to 65535");
    }
    for (const char* port : {"0", "65535", "", "abc"}) {
        store.setProperty("PORT", port);
        EXPECT_EQ(refusal(), "") << port;
    }
}

TEST_F(SettingsTest, RefuseAnInactivityTimeBelowZero) {
    store.setProperty("INACTIVITY", "-1");
    EXPECT_EQ(refusal(), "INACTIVITY=-1 is not possible: it must be a number from 0 to 2147483647");
}

TEST_F(SettingsTest, CountLimitsBelowZeroAsNone) {
    store.setProperty("REQUESTTIMEOUT", "-1");
    store.setProperty("MAXREQUEST", "-5");
    store.setProperty("TOOLTIMEOUT", "-2");
    EXPECT_EQ(settings().server.requestTimeout, 0);
    EXPECT_EQ(settings().server.maxRequest, 0);
    EXPECT_EQ(settings().toolTimeout, 0);
}

TEST_F(SettingsTest, SplitTheCommandListAtCommas) {
    store.setProperty("COMMANDS", " userDir, listDir ,,shutdown");
    EXPECT_EQ(settings().server.allowedCommands,
              (std::vector<std::string>{"userDir", "listDir", "shutdown"}));
}

TEST_F(SettingsTest, AllowEveryCommandForAnEmptyListOnly) {
    store.setProperty("COMMANDS", "");
    EXPECT_EQ(settings().server.allowedCommands, std::nullopt);
    for (const char* nameless : {",", " , ", " "}) {
        store.setProperty("COMMANDS", nameless);
        EXPECT_EQ(settings().server.allowedCommands, std::vector<std::string>{}) << nameless;
    }
}

TEST_F(SettingsTest, SplitTheFoldersAtColons) {
    using platform::Access;
    EXPECT_TRUE(settings().folders.empty());
    store.setProperty("FOLDERS", "");
    EXPECT_TRUE(settings().folders.empty());
    store.setProperty("FOLDERS", "/srv/a b:ro=/media:x=/usr/bin/foo");
    const auto folders = settings().folders;
    ASSERT_EQ(folders.size(), 3U);
    EXPECT_EQ(folders[0].path, "/srv/a b");
    EXPECT_EQ(folders[0].access, Access::Change);
    EXPECT_EQ(folders[1].path, "/media");
    EXPECT_EQ(folders[1].access, Access::Read);
    EXPECT_EQ(folders[2].path, "/usr/bin/foo");
    EXPECT_EQ(folders[2].access, Access::Run);
    EXPECT_FALSE(folders[0].isOwn || folders[1].isOwn || folders[2].isOwn);
}

TEST_F(SettingsTest, RefuseAFolderThatIsNoFullPath) {
    for (const char* entry : {"srv", "rw=/srv", "x=", "ro=media", ""}) {
        store.setProperty("FOLDERS", "/tmp:"s + entry);
        EXPECT_EQ(refusal(), "FOLDERS is not possible: '"s + entry +
                                 "' is no full path; only ro= and x= may stand in front of one");
    }
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
    store.setProperty("SHUTDOWNONDISCONNECT", "true");
    Server target;
    settings().apply(target);
    EXPECT_EQ(target.options.port, 5000);
    EXPECT_EQ(target.options.inactivity, 7);
    EXPECT_EQ(target.options.address, "127.0.0.2");
    EXPECT_TRUE(target.options.closeOnFatal);
    EXPECT_TRUE(target.options.debugRequestRead);
    EXPECT_EQ(target.options.requestTimeout, 3);
    EXPECT_EQ(target.options.maxRequest, 1000);
    EXPECT_TRUE(target.options.allowHttp);
    EXPECT_EQ(target.options.allowedCommands, std::vector<std::string>{"log"});
    EXPECT_EQ(target.options.shutdownOnDisconnect, 1);
}

TEST_F(SettingsTest, LeaveTheServersAddressAloneForAny) {
    Server target;
    target.options.address = "its own";
    store.setProperty("ADDRESS", "any");
    settings().apply(target);
    EXPECT_EQ(target.options.address, "its own");
    store.setProperty("ADDRESS", "Any");
    settings().apply(target);
    EXPECT_EQ(target.options.address, "Any");
    store.setProperty("ADDRESS", "");
    settings().apply(target);
    EXPECT_EQ(target.options.address, "");
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
    EXPECT_EQ(settings().server.port, 1);
    EXPECT_EQ(settings().server.inactivity, 0);
}

TEST_F(ConfigurationFileTest, IsTheOtherOneWhenTheFirstIsMissing) {
    scratch.file("corvane.cfg", "PORT=2\n");
    EXPECT_TRUE(load());
    EXPECT_EQ(settings().server.port, 2);
}

TEST_F(ConfigurationFileTest, MayBeMissing) {
    EXPECT_FALSE(load());
    EXPECT_EQ(settings().server.port, 54321);
}

TEST_F(ConfigurationFileTest, MayBeEmpty) {
    scratch.file("corvane.conf");
    scratch.file("corvane.cfg", "PORT=2\n");
    EXPECT_TRUE(load());
    EXPECT_EQ(settings().server.port, 54321);
}

TEST_F(ConfigurationFileTest, AreNotTheDefaultsWhenTheFileCannotBeRead) {
    const std::string path = scratch / "corvane.conf";
    scratch.file("corvane.cfg", "PORT=2\n");
    const auto refusal = [this] { return test::thrownBy<ConfigureFailure>([this] { load(); }); };
    scratch.directory("corvane.conf");
    EXPECT_EQ(refusal(), "Cannot read the configuration file " + path + ": Is a directory");
    ASSERT_EQ(::rmdir(path.c_str()), 0);
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(refusal(), "Cannot read the configuration file " + path + ": it is a pipe");
    ASSERT_EQ(::unlink(path.c_str()), 0);
    ASSERT_EQ(::symlink("corvane.conf", path.c_str()), 0);
    EXPECT_EQ(refusal(),
              "Cannot read the configuration file " + path + ": " + std::strerror(ELOOP));
}

}  // namespace
}  // namespace corvane
