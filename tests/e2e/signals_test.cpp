// Signals at random moments of a server under load, with every line logged: the handlers log and
// close sockets, which must never hang in the logging library or the allocator.
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <random>
#include <stdexcept>
#include <thread>

#include "e2e/server_test.h"

namespace corvane::test {
namespace {

using namespace std::string_literals;

class SignalsTest : public ServerTest {};

/// Sends requests from a thread of its own and counts the replies until the server is gone.
class Load {
  public:
    explicit Load(const ServerProcess& server)
        : client_(server.connect()), thread_([this] { run(); }) {}
    ~Load() { stop(); }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;
    Load(Load&&) = delete;
    Load& operator=(Load&&) = delete;

    void stop() {
        stopping_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    int replies() const { return replies_; }

  private:
    void run() {
        const std::string requests = "userDir\0unknown\0log\n\n\nline\0currentDir\0"s;
        constexpr int inRequests = 4;
        try {
            while (!stopping_ && client_.trySend(requests)) {
                for (int i = 0; i < inRequests; ++i) {
                    client_.reply();
                    ++replies_;
                }
            }
        } catch (const std::runtime_error&) {
            return;  // the server has ended
        }
    }

    std::atomic<bool> stopping_ = false;
    std::atomic<int> replies_ = 0;
    ClientSocket client_;
    std::thread thread_;
};

TEST_F(SignalsTest, OfAThousandChildrenArriveUnderLoad) {
    constexpr int children = 250;
    constexpr int signalsEach = 3;  // and one more when the child ends
    startWith({.files = {{"short", "#!/bin/sh\nexit 0\n"}}});
    Load load(server());
    ClientSocket launcher = server().connect();
    for (int i = 0; i < children; ++i) {
        EXPECT_EQ(launcher.request("execute\n" + (server().directory() / "short")),
                  success("execute"));
        for (int n = 0; n < signalsEach; ++n) {
            server().signal(SIGCHLD);
        }
    }
    load.stop();
    EXPECT_GT(load.replies(), 0);
    EXPECT_TRUE(waitUntil([this] {
        const std::vector<std::string> lines = server().logLines();
        return std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                   return line.rfind("DEBUG corvane.signal.chld child exited with status 0", 0) ==
                          0;
               }) == children;
    }));
}

TEST_F(SignalsTest, OfTerminationEndTheServerAtAnyMomentOfLoad) {
    constexpr int servers = 40;
    constexpr unsigned mostReplies = 400;
    std::mt19937 random(3);  // a failure must come back
    for (int i = 0; i < servers; ++i) {
        start();
        Load load(server());
        const int replies = static_cast<int>(random() % mostReplies);
        EXPECT_TRUE(waitUntil([&] { return load.replies() >= replies; }));
        server().signal(i % 2 == 0 ? SIGTERM : SIGINT);
        server().signal(SIGCHLD);
        server().signal(SIGTERM);  // may find it gone already
        EXPECT_EQ(server().wait(), 0);
        load.stop();
        EXPECT_EQ(server().logLines().back(), "NOTICE corvane application terminated");
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(SignalsTest, OfTerminationThatWereBlockedByTheParentStillArrive) {
    startWith({.prepare = [] {
        sigset_t all;
        sigfillset(&all);
        ::sigprocmask(SIG_BLOCK, &all, nullptr);
    }});
    server().signal(SIGTERM);
    EXPECT_EQ(server().wait(), 0);
}

TEST_F(SignalsTest, OfChildrenThatAreStoppedDoNotHoldUpTheInactivityTime) {
    constexpr int pauseInMilliseconds = 100;
    constexpr int mostStops = 200;  // far more than fit into the inactivity time
    startWith(
        {.configuration = "INACTIVITY=2\n",
         .files = {{"child", "#!/bin/sh\necho $$ > started\nmv started pid\nexec sleep 600\n"}}});
    server().request("execute\n" + (server().directory() / "child"));
    const std::string pidFile = server().directory() / "pid";
    EXPECT_TRUE(waitUntil([&] { return !readFile(pidFile).empty(); }));
    const auto child = static_cast<pid_t>(std::stol(readFile(pidFile)));
    int stops = 0;
    while (stops < mostStops && server().isRunning()) {
        ::kill(child, ++stops % 2 == 0 ? SIGCONT : SIGSTOP);
        ::poll(nullptr, 0, pauseInMilliseconds);
    }
    ::kill(child, SIGKILL);
    EXPECT_LT(stops, mostStops);
    EXPECT_EQ(server().wait(), 0);
}

TEST_F(SignalsTest, OfBrokenPipesNeverEndTheServer) {
    start();
    server().signal(SIGPIPE);
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
}

}  // namespace
}  // namespace corvane::test
