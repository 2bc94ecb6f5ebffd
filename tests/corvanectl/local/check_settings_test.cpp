#include "corvanectl/local/check_settings.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "app/setting_keys.h"
#include "support/scratch_directory.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

Installation with(const std::string& text) {
    Installation installation;
    installation.query = {"", 54321, "", ""};
    installation.directory = "/d/";
    installation.configuration = parseConfiguration("c", text);
    return installation;
}

/// The findings, "text -> mend" on a line each.
std::string found(Findings (*check)(const Installation&), const std::string& text) {
    std::string lines;
    for (const Finding& finding : check(with(text))) {
        EXPECT_TRUE(finding.isWrong) << finding.text;
        lines += concatenate(finding.text, " -> ", finding.mend, "\n");
    }
    return lines;
}

TEST(DoctorKeys, HasNothingAgainstTheSampleConfiguration) {
    const std::string sample = test::readFile(CORVANE_SAMPLE);
    EXPECT_EQ(found(checks::keys, sample), "");
    EXPECT_EQ(found(checks::values, sample), "");
}

TEST(DoctorKeys, KnowsEveryKeyOfTheSample) {
    std::set<std::string> shown;
    for (const std::string& line : strExplode(test::readFile(CORVANE_SAMPLE), "\n")) {
        const std::string key = line.substr(0, line.find('='));
        if (startsWith(line, "#") && key != line && key.find(' ') == std::string::npos &&
            !startsWith(key, "#app.")) {
            shown.insert(key.substr(1));
        }
    }
    std::set<std::string> known;
    for (const SettingKey& key : settingKeys) {
        known.emplace(key.name);
    }
    EXPECT_EQ(known, shown);
}

TEST(DoctorKeys, NamesTheOneThatWasMeant) {
    EXPECT_EQ(found(checks::keys, "MAXREQEST=1\n"),
              "c:1: the server knows no key 'MAXREQEST' -> did you mean MAXREQUEST?\n");
    EXPECT_EQ(found(checks::keys, "# a\n\nWhatever=1"),
              "c:3: the server knows no key 'Whatever' -> see corvane.conf(5) for the keys\n");
    EXPECT_EQ(found(checks::keys, "port=1\napp.txt=x\n"), "");
}

TEST(DoctorKeys, SeesBlanksBesideTheEqualsSign) {
    EXPECT_EQ(
        found(checks::keys, "PORT = 5000\n"),
        "c:1: a blank before '=' is part of the key 'PORT ', which the server does not know -> "
        "write PORT=5000\n");
    EXPECT_EQ(found(checks::keys, "  PORT= 5000  \n"),
              "c:1: a blank behind '=' is part of the value -> write PORT=5000\n");
}

TEST(DoctorKeys, SeesLinesThatAreNone) {
    EXPECT_EQ(found(checks::keys, "PORT 5000\n"),
              "c:1: 'PORT 5000' has no '=' -> write KEY=VALUE, or # in front of a comment\n");
}

TEST(DoctorValues, TellsWhatCountsAsNotSet) {
    for (const char* line : {"PORT=abc", "CONSOLE=yes", "MAXREQUEST=M"}) {
        EXPECT_NE(found(checks::values, line).find("counts as not set"), std::string::npos) << line;
    }
    EXPECT_NE(found(checks::values, "MAXREQUEST=10M").find("MAXREQUEST=10M counts as 10 ->"),
              std::string::npos);
    EXPECT_NE(found(checks::values, "CONSOLE=1x").find("the number that it begins with"),
              std::string::npos);
}

TEST(DoctorValues, TellsWhatIsRefused) {
    for (const char* line : {"PORT=70000", "PORT=-1", "INACTIVITY=-1", "log4cpp.priority=LOUD",
                             "log4cpp.priority=debug"}) {
        EXPECT_NE(found(checks::values, line).find("refused, the server does not start"),
                  std::string::npos)
            << line;
    }
}

TEST(DoctorValues, NamesTheCommandThatWasMeant) {
    EXPECT_EQ(found(checks::values, "COMMANDS=userdir,readText"),
              "c:1: COMMANDS=userdir,readText: there is no command 'userdir' -> "
              "did you mean userDir?\n");
}

TEST(DoctorValues, NamesNoCommandOfTheClientsOwn) {
    EXPECT_EQ(found(checks::values, "COMMANDS=doctor"),
              "c:1: COMMANDS=doctor: there is no command 'doctor' -> take it out\n");
}

TEST(DoctorValues, HasNothingAgainstGoodOnes) {
    EXPECT_EQ(found(checks::values,
                    "PORT=0\nport=65535\nCONSOLE=false\nCOMMANDS=userDir,shutdown,\nMAXREQUEST=-1\n"
                    "log4cpp.priority=WARN\nPORT=\nADDRESS=any\nSAMEUSER=1\n"),
              "");
}

TEST(DoctorFolders, AreThere) {
    const test::ScratchDirectory scratch;
    const std::string good = scratch.directory("a");
    EXPECT_EQ(found(checks::folders, "FOLDERS=" + good + ":ro=" + good + "\nCURRDIR=" + good), "");
    EXPECT_NE(found(checks::folders, "FOLDERS=ro=/nonexistent").find("No such file"),
              std::string::npos);
    EXPECT_NE(found(checks::folders, "FOLDERS=here").find("is no full path"), std::string::npos);
    EXPECT_NE(found(checks::folders, "CURRDIR=/nonexistent").find("CURRDIR: '/nonexistent'"),
              std::string::npos);
}

TEST(DoctorConfiguration, SaysWhyItCannotBeRead) {
    Installation installation = with("");
    EXPECT_FALSE(checks::configurationFile(installation).front().isWrong);
    installation.obstacle = "Permission denied";
    EXPECT_EQ(checks::configurationFile(installation).front().text,
              "c cannot be read: Permission denied");
    EXPECT_NE(found(checks::configurationFile, std::string(1024, 'x')).find("c:1 is longer"),
              std::string::npos);
}

}  // namespace
}  // namespace corvane::ctl
