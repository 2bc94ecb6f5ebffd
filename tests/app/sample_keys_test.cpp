// Every key of the sample configuration is read into exactly one field of the settings, and every
// field has a key: a new one cannot be forgotten on either side.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "app/settings.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

std::string text(const std::string& value) { return value; }
std::string text(int value) { return std::to_string(value); }
std::string text(const std::optional<Texts>& names) {
    std::string all = names ? "list" : "all";
    for (const std::string& name : names.value_or(Texts{})) {
        all += "," + name;
    }
    return all;
}

std::string text(const std::vector<platform::Grant>& folders) {
    std::string all;
    for (const platform::Grant& folder : folders) {
        all += folder.path + ":";
    }
    return all;
}

// The structured bindings do not compile when a struct gets another field: add it here as well.
Texts fields(const Properties& store) {
    const auto& [server, console, currentDirectory, toolTimeout, folders] = Settings(store);
    const auto& [address, port, inactivity, closeOnFatal, debugRequestRead, requestTimeout,
                 maxRequest, allowHttp, sameUser, allowedCommands, shutdownOnDisconnect] = server;
    const auto& [pattern, priority] = LogSettings(store);
    return {text(console),
            text(currentDirectory),
            text(toolTimeout),
            text(folders),
            text(address),
            text(port),
            text(inactivity),
            text(closeOnFatal),
            text(debugRequestRead),
            text(requestTimeout),
            text(maxRequest),
            text(allowHttp),
            text(sameUser),
            text(allowedCommands),
            text(pattern),
            text(priority),
            text(shutdownOnDisconnect)};
}

/// The keys of the sample, but for those of file extensions, with the values that it shows.
std::map<std::string, std::string> sampleKeys() {
    std::ifstream sample(CORVANE_SAMPLE);
    std::map<std::string, std::string> keys;
    for (std::string line; std::getline(sample, line);) {
        const std::size_t end = line.find('=');
        const std::string key = line.substr(0, end).substr(line.empty() ? 0 : 1);
        if (line[0] == '#' && end != std::string::npos && key.find(' ') == std::string::npos &&
            key.rfind("app.", 0) != 0) {
            keys[key] = line.substr(end + 1);
        }
    }
    return keys;
}

/// A value of a key that is not its default, and that it can have.
std::string otherThan(const std::string& key, const std::string& value) {
    return key == "FOLDERS" ? "/1" : value == "true" ? "false" : "1";
}

Texts fieldsWith(const std::string& key, const std::string& value) {
    Properties store(false);
    store.setProperty(key, value);
    return fields(store);
}

TEST(SampleKeys, AreShownWithTheirDefaults) {
    const Texts defaults = fields(Properties(false));
    for (const auto& [key, value] : sampleKeys()) {
        EXPECT_EQ(fieldsWith(key, value), defaults) << key;
    }
}

TEST(SampleKeys, HaveOneFieldEachAndLeaveNoneWithoutAKey) {
    const Texts defaults = fields(Properties(false));
    std::set<std::size_t> changed;
    const auto keys = sampleKeys();
    for (const auto& [key, value] : keys) {
        const Texts other = fieldsWith(key, otherThan(key, value));
        const std::size_t before = changed.size();
        for (std::size_t i = 0; i < other.size(); ++i) {
            if (other[i] != defaults[i]) {
                EXPECT_TRUE(changed.insert(i).second) << key;
            }
        }
        EXPECT_EQ(changed.size(), before + 1) << key;
    }
    EXPECT_EQ(changed.size(), keys.size());
    EXPECT_EQ(changed.size(), defaults.size());
}

}  // namespace
}  // namespace corvane
