// A console or a log that nobody reads, with every line logged: it holds the server up, but not its
// end.
#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "e2e/server_test.h"
#include "platform/file_desc.h"

namespace corvane::test {
namespace {

using namespace std::string_literals;

class UnreadConsole : public ServerTest {
  protected:
    // Standard output and error are `console`.
    void startOn(int console) {
        startWith({.configuration = "CONSOLE=true\nlog4cpp.priority=DEBUG\n",
                   .standardOutput = console,
                   .prepare = [] { ::dup2(STDOUT_FILENO, STDERR_FILENO); }});
    }
    // Sends requests until the server answers none of them any more.
    void holdUp() {
        ClientSocket client = server().connect();
        std::string requests;
        for (int i = 0; i < 1000; ++i) {
            requests += "userDir\0"s;
        }
        client.send(requests);
        EXPECT_TRUE(waitUntil([this] { return state() == 'S' && waitsInWrite(); }));
    }
    void expectEnd() {
        expectStatusZero();
        EXPECT_TRUE(server().hasLogged("NOTICE corvane application terminated"));
    }
    void expectStatusZero() {
        const bool ended = waitUntil([this] { return !server().isRunning(); });
        EXPECT_TRUE(ended);
        if (ended) {
            EXPECT_EQ(server().wait(), 0);
        }
    }
    char state() const {
        const std::string stat = readFile("/proc/" + std::to_string(server().pid()) + "/stat");
        return stat[stat.rfind(')') + 2];
    }
    bool waitsInWrite() const {
        const std::string call = readFile("/proc/" + std::to_string(server().pid()) + "/syscall");
        return call.rfind(std::to_string(SYS_write) + " ", 0) == 0;
    }
};

TEST_F(UnreadConsole, ThatIsAPipeDoesNotKeepTheServerFromStopping) {
    for (const int sig : {SIGTERM, SIGINT}) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        const FileDesc reader(ends[0]);
        const FileDesc writer(ends[1]);
        startOn(writer);
        holdUp();
        server().signal(sig);
        expectEnd();
    }
}

TEST_F(UnreadConsole, ThatIsAStoppedTerminalDoesNotKeepTheServerFromStopping) {
    int master = -1;
    int slave = -1;
    ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    const FileDesc reader(master);
    const FileDesc writer(slave);
    startOn(writer);
    ASSERT_EQ(::tcflow(writer, TCOOFF), 0);
    holdUp();
    server().signal(SIGTERM);
    expectEnd();
}

class UnreadLogFile : public UnreadConsole {
  protected:
    // The log is a pipe, made with the server's own first steps.
    void startWithPipe(void (*makePipe)()) {
        startWith({.configuration = "log4cpp.priority=DEBUG\n", .prepare = makePipe});
    }
};

TEST_F(UnreadLogFile, ThatIsAPipeWithoutAReaderGivesWayToTheOneInTheHomeDirectory) {
    startWithPipe([] { ::mkfifo("cv0.log", 0600); });
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
    server().signal(SIGTERM);
    expectStatusZero();
    const std::string log = readFile(server().home() + "/.cv0.log");
    EXPECT_NE(log.find("NOTICE corvane application terminated\n"), std::string::npos);
}

TEST_F(UnreadLogFile, ThatIsAPipeDoesNotKeepTheServerFromStopping) {
    startWithPipe([] {
        ::mkfifo("cv0.log", 0600);
        ::open("cv0.log", O_RDWR);  // a reader, which the server keeps
    });
    holdUp();
    server().signal(SIGTERM);
    expectStatusZero();
}

}  // namespace
}  // namespace corvane::test
