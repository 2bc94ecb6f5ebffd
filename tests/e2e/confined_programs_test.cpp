// Programs that a confined server starts, and the files that it keeps for itself: each is of use,
// and none is for clients.
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "e2e/confined_server.h"
#include "support/environment.h"
#include "support/in_child.h"

namespace corvane::test {
namespace {

namespace fs = std::filesystem;

const std::string screenReply =
    success("getScreenRect", detail("x", "0") + detail("y", "0") + detail("width", "1024") +
                                 detail("height", "768"));

class ConfinedProgramsTest : public ConfinedServerTest {
  protected:
    /// Runs a program that writes into "in/result" in the end, and returns that.
    std::string resultOf(const std::string& program) const {
        EXPECT_EQ(server().request("execute\n" + program), success("execute"));
        EXPECT_TRUE(waitUntil([this] { return !textOf("in/result").empty(); }));
        return textOf("in/result");
    }
    /// A script that runs `work`, and says at the end whether it could do that.
    std::string script(const std::string& work) const {
        return area.program("bin/script", "#!/bin/sh\nif { " + work +
                                              "; } 2>/dev/null; then r=done; "
                                              "else r=refused; fi\necho $r > " +
                                              (area / "in/result.new") + "\nmv " +
                                              (area / "in/result.new") + " " +
                                              (area / "in/result") + "\n");
    }
    /// Entries of FOLDERS for scripts, which use mv.
    static std::string shell() { return ":x=/bin/sh:x=/bin/mv:x=/bin/cat"; }
    void expectNotExecuted(const std::string& program) const {
        const auto refusals = [this] {
            const std::vector<std::string> lines = server().logLines();
            return std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                return line.find("child exited with status 65280 ") != std::string::npos;  // 255
            });
        };
        const auto before = refusals();
        EXPECT_EQ(server().request("execute\n" + program), success("execute"));
        EXPECT_TRUE(waitUntil([&] { return refusals() == before + 1; })) << program;
    }

    EnvironmentVariable secret{"XAUTHORITY", std::nullopt};
};

TEST_F(ConfinedProgramsTest, AreExecutedWhenTheyAreListed) {
    const std::string program = script("true");
    startConfined({.folders = shell() + ":x=" + program});
    EXPECT_EQ(resultOf(program), "done\n");
}

TEST_F(ConfinedProgramsTest, AreExecutedFromAFolderThatIsListed) {
    const std::string program = script("true");
    startConfined({.folders = shell() + ":x=" + (area / "bin")});
    EXPECT_EQ(resultOf(program), "done\n");
}

TEST_F(ConfinedProgramsTest, AreNotExecutedOtherwise) {
    const std::string program = script("true");
    startConfined({.folders = shell() + ":ro=" + (area / "bin")});
    expectNotExecuted(program);
    fs::copy(program, area / "in/program");
    fs::create_symlink(program, area / "in/link");
    expectNotExecuted(area / "in/program");
    expectNotExecuted(area / "in/link");
    EXPECT_EQ(textOf("in/result"), "");
}

TEST_F(ConfinedProgramsTest, ReachNoMoreThanTheServer) {
    for (const std::string& work :
         {"cat " + (area / "out/secret"), "echo > " + (area / "out/secret"),
          "echo > " + (area / "out/new"), "echo > " + (area / "ro/file"),
          "mv " + (area / "in/file") + " " + (area / "out"), std::string("/bin/true")}) {
        area.file("in/file");
        fs::remove(area / "in/result");
        const std::string program = script(work);
        startConfined({.folders = shell() + ":x=" + (area / "bin")});
        EXPECT_EQ(resultOf(program), "refused\n") << work;
    }
    EXPECT_EQ(textOf("out/secret") + textOf("ro/file"), "secretreadable");
}

TEST_F(ConfinedProgramsTest, AndTheirFoldersAreNotForClientsToRead) {
    const std::string program = script("true");
    startConfined({.folders = ":x=" + (area / "bin")});
    EXPECT_TRUE(fails("readText\n" + program));
    EXPECT_TRUE(fails("listDir\n" + (area / "bin")));
    EXPECT_TRUE(fails("copy\n" + program + "\n" + (area / "in")));
}

TEST_F(ConfinedProgramsTest, ThatAreTheWindowToolNeedNoEntry) {
    startConfined({.files = {{"cvnwinfo", readFile(CONFINED_PROGRAM)}}});
    EXPECT_EQ(server().request("getScreenRect"), screenReply);
}

TEST_F(ConfinedProgramsTest, ThatAreTheWindowToolReadTheSecretOfTheDisplay) {
    const EnvironmentVariable variable("XAUTHORITY", area.file("out/authority", "1024,768\n"));
    startConfined({.files = {{"cvnwinfo", readFile(CONFINED_PROGRAM)}}});
    EXPECT_EQ(server().request("getScreenRect"), screenReply);
    EXPECT_TRUE(fails("readText\n" + (area / "out/authority")));
    EXPECT_TRUE(fails("copy\n" + (area / "out/authority") + "\n" + (area / "in")));
    EXPECT_TRUE(fails("rename\n" + (area / "out/authority") + "\n" + (area / "in")));
}

TEST_F(ConfinedProgramsTest, ThatAreTheWindowToolAreOutOfReachWhenNoCommandNeedsIt) {
    const std::string program = script("cat $XAUTHORITY");
    const EnvironmentVariable variable("XAUTHORITY", area.file("out/authority", "1024,768\n"));
    startConfined({.folders = shell() + ":x=" + program, .configuration = "COMMANDS=execute\n"});
    EXPECT_EQ(resultOf(program), "refused\n");
    startConfined({.configuration = "COMMANDS=execute\n",
                   .files = {{"cvnwinfo", readFile(CONFINED_PROGRAM)}}});
    expectNotExecuted(server().directory() / "cvnwinfo");
}

TEST_F(ConfinedProgramsTest, ThatAreTheOpenerNeedNoEntryAndHaveStandardStreams) {
    const std::string opener = area.program("desktop/xdg-open", readFile(CONFINED_PROGRAM));
    const EnvironmentVariable path("PATH", area / "desktop");
    startConfined();
    EXPECT_EQ(server().request("execute\nhttp://example.invalid/"), success("execute"));
    startConfined({.configuration = "COMMANDS=execute\n"});
    EXPECT_EQ(server().request("execute\nhttp://example.invalid/"), success("execute"));
}

class ConfinedFilesTest : public ConfinedServerTest {
  protected:
    std::string value() const {
        const std::string reply = server().request("regQueryValue\nHKEY_USERS\nkey\nname");
        const std::size_t begin = reply.find("Value=\"");
        return begin == std::string::npos ? "" : reply.substr(begin + 7, 3);
    }
    /// With this file beside the program, and a home directory elsewhere.
    void startWithRegistry(const std::string& text) {
        startConfined({.files = {{"registry.txt", text}},
                       .prepare = [this] { ::setenv("HOME", (area / "home").c_str(), 1); }});
    }
    /// As an editor does it, which puts a new file in the place of the old one.
    static void replace(const std::string& file, const std::string& text) {
        writeFile(file + ".new", text);
        fs::rename(file + ".new", file);
    }
};

TEST_F(ConfinedFilesTest, OfTheRegistryCountAtOnceWhenTheyAreEdited) {
    area.file("home/.corvane/registry.txt", "other=\n");
    startWithRegistry("HKEY_USERS/key:name=one\n");
    EXPECT_EQ(value(), "one");
    replace(server().directory() / "registry.txt", "HKEY_USERS/key:name=two\n");
    EXPECT_EQ(value(), "two");
    replace(area / "home/.corvane/registry.txt", "HKEY_USERS/key:name=our\n");
    EXPECT_EQ(value(), "our");
}

TEST_F(ConfinedFilesTest, OfTheRegistryThatCannotBeReadKeepNoOtherFromCounting) {
    startWithRegistry("HKEY_USERS/key:name=one\n");
    area.file("home/.corvane/registry.txt", "HKEY_USERS/key:name=two\n");  // too late
    EXPECT_EQ(value(), "one");
}

TEST_F(ConfinedFilesTest, OfTheServersOwnAreNotForClients) {
    startConfined({.files = {{"registry.txt", "HKEY_USERS/key:name=one\n"}}});
    for (const char* name : {"registry.txt", "corvane.conf", "cv0.log", "corvane"}) {
        const std::string file = server().directory() / name;
        EXPECT_TRUE(fails("readText\n" + file)) << name;
        EXPECT_TRUE(fails("readByte\n" + file + "\n0")) << name;
        EXPECT_TRUE(fails("copy\n" + file + "\n" + (area / "in"))) << name;
    }
    EXPECT_TRUE(fails("listDir\n" + server().directory().path()));
    EXPECT_TRUE(fails("copy\n" + (area / "ro/file") + "\n/dev/null"));
    EXPECT_TRUE(fails("write\n/dev/null\ntext"));
    EXPECT_EQ(treeAt(area / "in"), Tree{});
}

TEST_F(ConfinedFilesTest, OfTheLogGrowOnAfterARotation) {
    startConfined();
    const std::string log = server().directory() / "cv0.log";
    fs::copy(log, log + ".1");
    ASSERT_EQ(::truncate(log.c_str(), 0), 0);  // "copytruncate" of logrotate
    server().request("log\nrotation\nINFO\nafterwards");
    EXPECT_TRUE(server().hasLogged("INFO ext.log.rotation afterwards"));
}

TEST_F(ConfinedFilesTest, ThatTellTheUsersNameAreReadBefore) {
    // It cannot be undone, and only the superuser may do it.
    const auto becomeRoot = [] {
        const int file = ::open("/proc/self/loginuid", O_WRONLY);
        return file == -1 || ::write(file, "0", 1) != 1 ? 1 : ::close(file);
    };
    if (inChild(becomeRoot) != 0) {
        GTEST_SKIP() << "this user may not set the user who has logged in";
    }
    startConfined({.prepare = [&becomeRoot] { becomeRoot(); }});
    EXPECT_EQ(server().request("userName"), success("userName", valueDetail("root"), "userName"));
}

TEST_F(ConfinedFilesTest, ThatTellTheNamesOfUsersThatAreRefusedAreInReach) {
    constexpr uid_t stranger = 1;
    const passwd* const entry = ::getpwuid(stranger);
    if (::geteuid() != 0 || entry == nullptr) {
        GTEST_SKIP() << "only the superuser can become another user, who must have a name";
    }
    startConfined({.configuration = "SAMEUSER=true\n"});
    inChild([&] { return ::setuid(stranger) == 0 && server().connect().isEnded() ? 0 : 1; });
    EXPECT_TRUE(server().waitForLog("of user 1 (" + std::string(entry->pw_name) + ")"));
    EXPECT_TRUE(fails("readText\n/etc/passwd"));
}

}  // namespace
}  // namespace corvane::test
