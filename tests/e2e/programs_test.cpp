// What a program that the server starts finds: no descriptor of the server's, no blocked or ignored
// signal; and what becomes of it when it ends or stops.
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "e2e/server_test.h"

namespace corvane::test {
namespace {

// Writes its descriptors, its signal masks and, last, a line "done" into a file beside itself.
constexpr const char* reporter = R"sh(#!/bin/sh
cd "$(dirname "$0")"
for fd in /proc/$$/fd/*; do readlink "$fd"; done > fds
grep -E '^Sig(Blk|Ign|Pnd):' /proc/self/status > signals
echo done > finished
)sh";

class ProgramsTest : public ServerTest {
  protected:
    std::string execute(const std::string& name) {
        return server().request("execute\n" + (server().directory() / name));
    }
    std::string content(const std::string& name) const {
        return readFile(server().directory() / name);
    }
};

TEST_F(ProgramsTest, GetNoDescriptorOfTheServers) {
    startWith({.files = {{"reporter", reporter}}});
    ClientSocket client = server().connect();  // one more that must not be handed down
    client.request("currentDir");
    EXPECT_EQ(execute("reporter"), success("execute"));
    EXPECT_TRUE(waitUntil([this] { return content("finished") == "done\n"; }));
    std::istringstream links(content("fds"));
    const std::string own = server().directory().path();
    for (std::string link; std::getline(links, link);) {
        EXPECT_TRUE(link == own + "reporter" || link == own + "fds" || link.empty() ||
                    link.rfind("/proc/", 0) == 0)
            << link;
    }
}

TEST_F(ProgramsTest, GetDefaultSignals) {
    startWith({.files = {{"reporter", reporter}}});
    execute("reporter");
    EXPECT_TRUE(waitUntil([this] { return content("finished") == "done\n"; }));
    EXPECT_EQ(content("signals"),
              "SigPnd:\t0000000000000000\nSigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(ProgramsTest, AreLoggedWhenTheyEnd) {
    startWith({.files = {{"three", "#!/bin/sh\nexit 3\n"}}});
    execute("three");
    EXPECT_TRUE(server().waitForLog("DEBUG corvane.signal.chld child exited with status 768 (sig " +
                                    std::to_string(SIGCHLD) + ")"));
}

TEST_F(ProgramsTest, ThatDoNotExistEndWithStatus255) {
    start();
    EXPECT_EQ(execute("nothing"), success("execute"));
    EXPECT_TRUE(server().waitForLog("child exited with status 65280 (sig "));
}

TEST_F(ProgramsTest, ThatStopDoNotBlockTheServer) {
    startWith({.files = {{"sleeper",
                          "#!/bin/sh\ncd \"$(dirname \"$0\")\"\necho $$ > pid.new\n"
                          "mv pid.new pid\nexec sleep 1000\n"}}});
    execute("sleeper");
    EXPECT_TRUE(waitUntil([this] { return !content("pid").empty(); }));
    const pid_t program = std::stoi(content("pid"));
    for (const int sig : {SIGSTOP, SIGCONT, SIGSTOP}) {
        ::kill(program, sig);
        EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
    }
    EXPECT_EQ(server().log().find("child exited"), std::string::npos);
    ::kill(program, SIGKILL);
    EXPECT_TRUE(server().waitForLog("child exited with status 9 (sig "));
}

TEST_F(ProgramsTest, ThatEndTogetherAreAllCollected) {
    constexpr int count = 40;
    startWith({.files = {{"waiter", "#!/bin/sh\nread line < \"$(dirname \"$0\")/go\"\nexit 0\n"}}});
    const std::string go = server().directory() / "go";
    ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
    std::fstream starter(go);  // for both directions, so that opening it does not wait
    for (int i = 0; i < count; ++i) {
        execute("waiter");
    }
    starter << std::string(count, '\n') << std::flush;
    EXPECT_TRUE(waitUntil([&] {
        const std::vector<std::string> lines = server().logLines();
        return std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                   return line.find("child exited with status 0 ") != std::string::npos;
               }) == count;
    }));
    EXPECT_FALSE(server().hasZombies());
}

TEST_F(ProgramsTest, ThatAreTheWindowToolGetNoSocketOfTheServersEither) {
    startWith({.files = {{"cvnwinfo", reporter}}});
    ClientSocket client = server().connect();
    client.request("getScreenRect");
    EXPECT_EQ(content("finished"), "done\n");
    EXPECT_EQ(content("fds").find("socket:"), std::string::npos) << content("fds");
    EXPECT_EQ(content("fds").find("cv0.log"), std::string::npos) << content("fds");
    EXPECT_EQ(content("signals"),
              "SigPnd:\t0000000000000000\nSigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(ProgramsTest, ThatAreTheWindowToolAreKilledAfterTheTimeLimit) {
    startWith({.configuration = "TOOLTIMEOUT=1\n",
               .files = {{"cvnwinfo", "#!/bin/sh\nexec sleep 1000\n"}}});
    EXPECT_NE(server().request("getScreenRect").find("Result=\"FAILED\""), std::string::npos);
    EXPECT_TRUE(server().waitForLog("Program has exited in unusual way (9)"));
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
}

TEST_F(ProgramsTest, ThatAreTheWindowToolDoNotKeepTheServerFromStopping) {
    startWith({.files = {{"cvnwinfo", "#!/bin/sh\nexec sleep 1000\n"}}});
    ClientSocket client = server().connect();
    client.send(std::string("getScreenRect\0", 14));
    EXPECT_TRUE(server().waitForLog("corvane.wndutil.execute execute: "));
    server().signal(SIGTERM);
    EXPECT_EQ(server().wait(), 0);
    EXPECT_EQ(server().logLines().back(), "NOTICE corvane application terminated");
}

class BackslashTest : public ProgramsTest {
  protected:
    /// The desktop's opener and a program, which write down what they were started with.
    void SetUp() override {
        const std::string recorder = "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\" > started\n";
        startWith({.files = {{"xdg-open", recorder}, {"sub/tool_mac", recorder}},
                   .prepare = [] { ::setenv("PATH", ".", 1); }});
    }
    /// What is started for a target, and with which arguments.
    void expectStarted(const std::string& target, const std::string& started) {
        EXPECT_EQ(server().request("execute\n" + target), success("execute"));
        EXPECT_TRUE(waitUntil([&] { return content("started") == started; })) << target;
    }
};

TEST_F(BackslashTest, MakesAnAddressOfAPathWithADriveLetter) {
    expectStarted("C:\\Docs\\a.txt", "./xdg-open|C:/Docs/a.txt|");
    EXPECT_NE(server().log().find(": execute app 'C:/Docs/a.txt' currdir '"), std::string::npos);
}

TEST_F(BackslashTest, SeparatesDirectoriesOfADocument) {
    expectStarted("docs\\a b.txt", "./xdg-open|docs/a b.txt|");
}

TEST_F(BackslashTest, SeparatesDirectoriesOfAProgram) {
    expectStarted("sub\\tool.exe?x=1", "sub/tool_mac|");
}

}  // namespace
}  // namespace corvane::test
