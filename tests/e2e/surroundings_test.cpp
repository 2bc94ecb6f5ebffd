// Surroundings that are not as they should be: a directory that may only be read, a start from
// elsewhere, a log that cannot grow, a wall clock that jumps.
#include <linux/capability.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <set>

#include "e2e/server_test.h"
#include "support/sanitized.h"
#include "support/tree.h"

namespace corvane::test {
namespace {

/// Has the program that is executed next heed the permissions of files, also for the superuser.
void heedPermissions() {
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

class ReadOnlyDirectoryTest : public ServerTest {
  protected:
    void SetUp() override {
        startWith({.files = {{"closed/file", "kept"}}, .prepare = heedPermissions});
        setMode(0555);
    }
    void TearDown() override {
        setMode(0755);  // for whoever removes it
        ServerTest::TearDown();
    }
    void setMode(mode_t mode) const {
        EXPECT_EQ(::chmod((server().directory() / "closed").c_str(), mode), 0);
    }
};

TEST_F(ReadOnlyDirectoryTest, StaysAsItIsAndEveryChangeOfItFails) {
    for (const std::string request :
         {"write\nclosed/new\ntext", "makeDir\nclosed/new", "copy\nclosed/file\nclosed/new",
          "rename\nclosed/file\nclosed/new", "rename\nclosed/file\nhome/moved",
          "delete\nclosed/file", "delete\nclosed"}) {
        EXPECT_NE(server().request(request).find("Result=\"FAILED\""), std::string::npos)
            << request;
    }
    EXPECT_EQ(treeAt(server().directory() / "closed"), (Tree{{"file", "file:kept"}}));
}

TEST_F(ReadOnlyDirectoryTest, CanBeReadAndCopiedFrom) {
    EXPECT_NE(server().request("readText\nclosed/file").find(">kept<"), std::string::npos);
    EXPECT_EQ(server().request("copy\nclosed\nhome"), success("copy"));
    EXPECT_EQ(treeAt(server().home()), (Tree{{"file", "file:kept"}}));
}

class ElsewhereTest : public ServerTest {};

TEST_F(ElsewhereTest, FindsItsFilesBesideTheProgram) {
    startWith({.files = {{"registry.txt", "HKEY_USERS/X:n=v\n"}},
               .prepare = [] { static_cast<void>(::chdir("/")); }});
    EXPECT_TRUE(server().hasLogged("INFO corvane Current dir is '/'"));
    EXPECT_EQ(server().request("regQueryValue\nHKEY_USERS\nX\nn"),
              success("regQueryValue", valueDetail("v"), "HKEY_USERS/X:n"));
}

TEST_F(ElsewhereTest, FindsItsFilesByARelativeNameOfTheProgramAfterItHasLeft) {
    startWith({.configuration = "CURRDIR=/\n",
               .files = {{"registry.txt", "HKEY_USERS/X:n=v\n"}},
               .prepare = [] { ::execl("./corvane", "./corvane", nullptr); }});
    EXPECT_EQ(server().request("currentDir"), currentDirReply("/"));
    EXPECT_EQ(server().request("regQueryValue\nHKEY_USERS\nX\nn"),
              success("regQueryValue", valueDetail("v"), "HKEY_USERS/X:n"));
}

class FullLogTest : public ServerTest {
  protected:
    static constexpr rlim_t full = 4096;  // bytes; the first lines of the start fit

    /// A write beyond the limit fails, as on a full disk, and its signal ends who does not ignore
    /// it.
    static void limitFiles() {
        const rlimit limit{full, full};
        static_cast<void>(std::signal(SIGXFSZ, SIG_DFL));
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
};

TEST_F(FullLogTest, KeepsNoRequestFromItsReply) {
    constexpr int count = 10'000;  // each has lines for the log
    constexpr long growth = 1024;  // KiB
    startWith({.prepare = limitFiles});
    const std::string expected = currentDirReply(server().directory().path());
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("currentDir"), expected);
    const long before = server().residentMemory();
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(client.request("currentDir"), expected);
    }
    EXPECT_EQ(server().log().size(), full);
    if (!isSanitized) {  // sanitizers keep what is freed for a while
        EXPECT_LT(server().residentMemory(), before + growth);  // nothing waits for a place
    }
}

class JumpingClockTest : public ServerTest {
  protected:
    void SetUp() override {
        if (isSanitized) {
            GTEST_SKIP() << "sanitizers want to be loaded before the library that makes it jump";
        }
    }
    void startJumping(const std::string& configuration) {
        startWith({.files = {{"corvane.conf", "PORT=0\n" + configuration}},
                   .ownConfiguration = true,
                   .prepare = [] {
                       ::setenv("LD_PRELOAD", JUMPING_CLOCK, 1);
                       ::setenv("STEADY_CLOCK_AHEAD", "ahead", 1);
                   }});
    }
    /// Has the steady clock be ahead by so many seconds, more than before.
    void advanceSteadyClock(std::size_t seconds) const {
        server().directory().file("ahead", std::string(seconds, '.'));
    }
    std::size_t count(const std::string& text) const {
        const std::vector<std::string> lines = server().logLines();
        return static_cast<std::size_t>(std::count_if(
            lines.begin(), lines.end(),
            [&text](const std::string& line) { return line.find(text) != std::string::npos; }));
    }
    /// The days of the lines of the log.
    std::set<std::string> days() const {
        constexpr std::size_t dayLength = 10;
        std::set<std::string> days;
        for (const std::string& line : server().logLines()) {
            days.insert(line.substr(0, dayLength));
        }
        return days;
    }
};

TEST_F(JumpingClockTest, EndsNoRequestBeforeItsTime) {
    startJumping("REQUESTTIMEOUT=1000\nDEBUGREQUESTREAD=true\n");
    ClientSocket client = server().connect();
    const std::string command = "abcdefgh";
    for (const char c : command) {
        client.send({&c, 1});
        ASSERT_TRUE(server().waitForLog("request byte " + std::to_string(c) + " "));
    }
    EXPECT_EQ(client.request(""), failure(command));
    EXPECT_GT(days().size(), command.size());  // it did jump
}

TEST_F(JumpingClockTest, NeitherHastensNorHoldsUpTheInactivityTime) {
    startJumping("INACTIVITY=1\n");
    const auto before = std::chrono::steady_clock::now();
    server().request("userDir");
    EXPECT_EQ(server().wait(), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(1));
    EXPECT_GT(days().size(), 3U);
}

TEST_F(JumpingClockTest, LetsTheServerWarnOfBrowsersOnceAMinute) {
    const std::string warning = "refused, not an application's request";
    startJumping("");
    const auto attack = [this] {
        ClientSocket browser = server().connect();
        browser.send("GET / HTTP/1.1\r\n");
        browser.untilEnd();
    };
    for (const std::size_t seconds : {0U, 1U, 10U, 30U}) {
        advanceSteadyClock(seconds);
        attack();
    }
    EXPECT_EQ(count(warning), 1U);
    advanceSteadyClock(61);
    attack();
    attack();
    EXPECT_EQ(count(warning), 2U);
}

}  // namespace
}  // namespace corvane::test
