// The keys of the configuration with what their values may be, for whoever explains a
// configuration. The settings read them (app/settings.cpp); a test compares both.
#pragma once

#include <array>
#include <climits>
#include <string_view>

namespace corvane {

enum class SettingKind {
    Text,
    Directory,
    /// From `lowest` to `highest`; the server does not start with another number.
    Number,
    /// Below 0 counts as 0.
    Limit,
    /// "true" or "false".
    Flag,
    /// Names of commands, separated by commas.
    Commands,
    /// Full paths, separated by colons, with "ro=" or "x=" in front of some.
    Folders,
    /// One of log4cpp's names; the server does not start with another one.
    Priority,
};

struct SettingKey {
    std::string_view name;
    SettingKind kind;
    long lowest = 0;
    long highest = 0;
};

/// All but "app.EXT" and "app.EXT.mac", which have the extension of a file in their names.
inline constexpr auto settingKeys = std::to_array<SettingKey>({
    {"ADDRESS", SettingKind::Text},
    {"PORT", SettingKind::Number, 0, 65535},
    {"INACTIVITY", SettingKind::Number, 0, INT_MAX},
    {"SHUTDOWNONDISCONNECT", SettingKind::Number, INT_MIN, INT_MAX},
    {"CONSOLE", SettingKind::Flag},
    {"CURRDIR", SettingKind::Directory},
    {"REQUESTTIMEOUT", SettingKind::Limit},
    {"MAXREQUEST", SettingKind::Limit},
    {"TOOLTIMEOUT", SettingKind::Limit},
    {"SAMEUSER", SettingKind::Flag},
    {"COMMANDS", SettingKind::Commands},
    {"FOLDERS", SettingKind::Folders},
    {"ALLOWHTTP", SettingKind::Flag},
    {"log4cpp.priority", SettingKind::Priority},
    {"log4cpp.pattern", SettingKind::Text},
    {"DEBUGREQUESTREAD", SettingKind::Flag},
    {"CLOSEONFATAL", SettingKind::Flag},
});

}  // namespace corvane
