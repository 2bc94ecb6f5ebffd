#include "commands/registry.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/command_fixture.h"
#include "support/environment.h"
#include "support/thrown.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

using test::commandLine;
using test::failure;
using test::success;
using test::thrownBy;
using test::valueDetail;

const std::string systemFile = "/etc/corvane/registry.txt";

class Registry : public test::CommandTest {
  protected:
    void userValues(const std::string& text) { scratch.file("home/.corvane/registry.txt", text); }
    void applicationValues(const std::string& text) { scratch.file("app/registry.txt", text); }

    std::string query(const std::string& root, const std::string& path, const std::string& name) {
        return ask("regQueryValue", root + "\n" + path + "\r\n" + name + "\n");
    }
    static std::string unreadable(const std::string& file) {
        return "DEBUG corvane.fileutil.getRegString.ux doesn't have READ access to file '" + file +
               "'";
    }
    std::string notFound(const std::string& key) const {
        return "Can't find registry key '" + key + "' neither in " + userFile + " nor " +
               applicationFile + " nor " + systemFile;
    }
    // The lines about the files before the last one that cannot be read.
    Lines allUnreadable() const {
        Lines lines{unreadable(userFile), unreadable(applicationFile)};
        if (!std::filesystem::exists(systemFile)) {
            lines.push_back(unreadable(systemFile));
        }
        return lines;
    }

    std::string userFile = scratch / "home/.corvane/registry.txt";
    std::string applicationFile = scratch / "app/registry.txt";
    test::EnvironmentVariable home{"HOME", scratch / "home"};
    test::ProgramArguments arguments{{scratch / "app/corvane"}};
};

TEST_F(Registry, AnswersAValueOfTheUsersFile) {
    userValues("HKEY_LOCAL_MACHINE/Software/Acme/Tool:InstallDir=/Applications/Tool\n");
    EXPECT_EQ(query("HKEY_LOCAL_MACHINE", "Software\\Acme\\Tool", "InstallDir"),
              success("regQueryValue", valueDetail("/Applications/Tool"),
                      "HKEY_LOCAL_MACHINE/Software\\Acme\\Tool:InstallDir"));
    EXPECT_EQ(log.lines(),
              Lines{commandLine("DEBUG", "regQueryValue",
                                " root 'HKEY_LOCAL_MACHINE' path 'Software/Acme/Tool' value "
                                "'InstallDir'")});
}

TEST_F(Registry, AcceptsTheFiveRoots) {
    for (const std::string root : {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE",
                                   "HKEY_USERS", "HKEY_CURRENT_CONFIG"}) {
        userValues(root + "/p:n=v\n");
        EXPECT_EQ(getRegString(root, "p", "n"), "v");
    }
}

TEST_F(Registry, RejectsAnyOtherRoot) {
    for (const std::string root : {"hkey_local_machine", "HKLM", "", "HKEY_USERS/", "HKEY_USER"}) {
        EXPECT_EQ(query(root, "p", "n"), failure("regQueryValue", root + "/p:n"));
        EXPECT_EQ(
            log.lines(),
            (Lines{
                commandLine("DEBUG", "regQueryValue", " root '" + root + "' path 'p' value 'n'"),
                "ERROR corvane.server.process.client.cmd.regQueryValue Wrong root key " + root}));
    }
}

TEST_F(Registry, IgnoresLetterCaseInTheFile) {
    userValues("hkey_local_machine/software/x:name=v\n");
    EXPECT_EQ(getRegString("HKEY_LOCAL_MACHINE", "Software\\X", "Name"), "v");
}

TEST_F(Registry, TakesTheLastOfTwoLinesWithTheSameKey) {
    userValues("HKEY_USERS/X:Name=1\nhkey_users/x:NAME=2\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "Name"), "2");
}

TEST_F(Registry, PrefersTheUsersFile) {
    userValues("HKEY_USERS/X:a=user\n");
    applicationValues("HKEY_USERS/X:a=application\nHKEY_USERS/X:b=application\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "a"), "user");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "b"), "application");
}

TEST_F(Registry, SearchesTheUsersFileThenTheApplicationsThenTheSystems) {
    RegistryFiles files = registryFiles();
    EXPECT_EQ(files[0](), userFile);
    EXPECT_EQ(files[1](), applicationFile);
    EXPECT_EQ(files[2](), systemFile);
    std::string substitute = scratch.file("etc/registry.txt",
                                          "HKEY_USERS/X:a=system\nHKEY_USERS/X:b=system\n"
                                          "HKEY_USERS/X:c=system\n");
    files[2] = [&] { return substitute; };
    applicationValues("HKEY_USERS/X:a=application\nHKEY_USERS/X:b=application\n");
    userValues("HKEY_USERS/X:a=user\n");
    EXPECT_EQ(findRegString("HKEY_USERS/X:a", files), "user");
    EXPECT_EQ(findRegString("HKEY_USERS/X:b", files), "application");
    EXPECT_EQ(findRegString("HKEY_USERS/X:c", files), "system");
    EXPECT_EQ(thrownBy<Exception>([&] { findRegString("HKEY_USERS/X:d", files); }),
              "Can't find registry key 'HKEY_USERS/X:d' neither in " + userFile + " nor " +
                  applicationFile + " nor " + substitute);
}

TEST_F(Registry, PrefersTheUsersFileToTheSystems) {
    userValues("HKEY_USERS/X:a=user\n");
    RegistryFiles files = registryFiles();
    files[2] = [path = scratch.file("etc/registry.txt", "HKEY_USERS/X:a=system\n")] {
        return path;
    };
    EXPECT_EQ(findRegString("HKEY_USERS/X:a", files), "user");
}

TEST_F(Registry, NeedsNoPlaceOfTheProgramForAValueOfTheUsersFile) {
    userValues("HKEY_USERS/X:a=user\n");
    const test::ProgramArguments unknown({});
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "a"), "user");
    EXPECT_EQ(thrownBy<IOException>([] { getRegString("HKEY_USERS", "X", "b"); }),
              "cannot find application path. last path '' (2)");
}

TEST_F(Registry, GoesOnWhenAFileIsMissing) {
    applicationValues("HKEY_USERS/X:b=application\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "b"), "application");
    EXPECT_EQ(log.lines(), Lines{unreadable(userFile)});
}

TEST_F(Registry, TakesAnEmptyValueForFound) {
    userValues("HKEY_USERS/X:Name=\n");
    applicationValues("HKEY_USERS/X:Name=other\n");
    EXPECT_EQ(query("HKEY_USERS", "X", "Name"),
              success("regQueryValue", valueDetail(""), "HKEY_USERS/X:Name"));
}

TEST_F(Registry, KeepsEqualsSignsAndBlanksOfValues) {
    userValues("HKEY_USERS/X:Cmd=a=b\nHKEY_USERS/X:Path = /tmp\nHKEY_USERS/X:<=&\"\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "Cmd"), "a=b");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "Path "), " /tmp");
    EXPECT_EQ(query("HKEY_USERS", "X", "<"),
              success("regQueryValue", valueDetail("&\""), "HKEY_USERS/X:<"));
}

TEST_F(Registry, KeepsASeparatorAtTheEndOfThePath) {
    userValues("HKEY_CURRENT_USER/Software/X:Name=v\n");
    EXPECT_EQ(query("HKEY_CURRENT_USER", "Software\\X\\", "Name"),
              failure("regQueryValue", "HKEY_CURRENT_USER/Software\\X\\:Name"));
    EXPECT_TRUE(log.contains("ERROR corvane.server.process.client.cmd.regQueryValue " +
                             notFound("HKEY_CURRENT_USER/Software/X/:Name")));
}

TEST_F(Registry, NamesAllFilesWhenNoneHasTheKey) {
    EXPECT_EQ(query("HKEY_CURRENT_USER", "Software/X", "Path"),
              failure("regQueryValue", "HKEY_CURRENT_USER/Software/X:Path"));
    Lines expected = allUnreadable();
    expected.insert(expected.begin(),
                    commandLine("DEBUG", "regQueryValue",
                                " root 'HKEY_CURRENT_USER' path 'Software/X' value 'Path'"));
    expected.push_back("ERROR corvane.server.process.client.cmd.regQueryValue " +
                       notFound("HKEY_CURRENT_USER/Software/X:Path"));
    EXPECT_EQ(log.lines(), expected);
}

TEST_F(Registry, TreatsAFileThatLeadsNowhereAsUnreadable) {
    scratch.directory("home/.corvane");
    std::filesystem::create_symlink("nowhere", userFile);
    applicationValues("HKEY_USERS/X:n=v\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "n"), "v");
    EXPECT_EQ(log.lines(), Lines{unreadable(userFile)});
}

TEST_F(Registry, StopsReadingAFileAtALineThatIsTooLong) {
    userValues("HKEY_USERS/X:a=1\n" + std::string(1100, 'x') + "\nHKEY_USERS/X:b=2\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "a"), "1");
    EXPECT_THROW(getRegString("HKEY_USERS", "X", "b"), Exception);
}

TEST_F(Registry, SeesAnEditedFileAtOnce) {
    userValues("HKEY_USERS/X:n=1\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "n"), "1");
    userValues("HKEY_USERS/X:n=2\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "n"), "2");
}

TEST_F(Registry, AcceptsAHomeDirectoryWithASeparatorAtTheEnd) {
    const test::EnvironmentVariable other("HOME", scratch / "home/");
    userValues("HKEY_USERS/X:n=1\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "n"), "1");
}

TEST_F(Registry, GivesADefaultAndLogsTheReason) {
    EXPECT_EQ(getRegString("HKLM", "p", "n", "def"), "def");
    EXPECT_EQ(log.lines(), Lines{"ERROR corvane.fileutil.getRegString Wrong root key HKLM"});
    userValues("HKEY_USERS/X:n=1\n");
    EXPECT_EQ(getRegString("HKEY_USERS", "X", "n", "def"), "1");
}

TEST_F(Registry, CannotBeWritten) {
    EXPECT_EQ(thrownBy<Exception>([] { setRegString("HKEY_USERS", "p", "n", "v"); }),
              "setRegString is unsupported");
    EXPECT_EQ(ask("regSetValue", "HKEY_USERS\nA\\B\nname\nva%s\n"),
              failure("regSetValue", "HKEY_USERS/A\\B:name"));
    EXPECT_EQ(log.lines(),
              (Lines{commandLine("DEBUG", "regSetValue",
                                 " root 'HKEY_USERS' path 'A/B' key 'name' value 'va%s'"),
                     "ERROR corvane.server.process.client.cmd.regSetValue setRegString is "
                     "unsupported"}));
}

TEST_F(Registry, NeedsNoParameterLines) {
    EXPECT_EQ(ask("regQueryValue"), failure("regQueryValue", "/:"));
    EXPECT_EQ(ask("regSetValue"), failure("regSetValue", "/:"));
}

}  // namespace
}  // namespace corvane
