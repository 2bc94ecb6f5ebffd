// A shortage of descriptors: how long the listener is left alone, in virtual time.
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "server/server_fixture.h"
#include "server/virtual_time_linux.h"
#include "support/resource_limit.h"

namespace {

/// What the next accept fails with; 0 for nothing.
int nextAcceptError = 0;

}  // namespace

// Takes the place of the C library's function in this program.
extern "C" int accept4(int listener, sockaddr* peer, socklen_t* length, int flags) {
    if (nextAcceptError != 0) {
        errno = std::exchange(nextAcceptError, 0);
        return -1;
    }
    return static_cast<int>(::syscall(SYS_accept4, listener, peer, length, flags));
}

namespace corvane {
namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

class DescriptorShortage : public ServerFixture {
  protected:
    DescriptorShortage() { server.options.inactivity = 0; }

    Lines acceptErrors(std::size_t count) const {
        return Lines(count, "WARN corvane.server.process.listener accept error " +
                                std::to_string(EMFILE) + " on socket " +
                                server.listeners.front().address);
    }

    test::LogCapture log{log4cpp::Priority::WARN};
};

TEST_F(DescriptorShortage, LetsTheListenerRestForATenthOfASecondEachTime) {
    test::ClientSocket waiting(port);
    waiting.send("shutdown\0"s);
    std::optional<test::DescriptorLimit> limit(std::in_place, test::nextDescriptor());
    test::VirtualTime time;
    time.afterWait = [&] {
        if (time.waits().size() == 3) {
            limit.reset();
        }
    };
    server.process();
    EXPECT_EQ(time.waits(), std::vector<milliseconds>(3, milliseconds(100)));
    EXPECT_EQ(log.lines(), acceptErrors(3));
}

TEST_F(DescriptorShortage, IsOverWhenAConnectionIsClosed) {
    test::ClientSocket leaving = connect();
    test::ClientSocket waiting(port);
    waiting.send("shutdown\0"s);
    const test::DescriptorLimit limit(test::nextDescriptor());
    server.processListener(server.listeners.front().sock);
    EXPECT_EQ(log.lines(), acceptErrors(1));
    leaving.close();
    while (!server.clients.empty()) {
        server.processClient(accepted());
    }
    const test::VirtualTime time;
    server.process();
    EXPECT_EQ(time.waits(), std::vector<milliseconds>());
}

TEST_F(DescriptorShortage, IsAlsoThatOfTheWholeSystemAndOneOfMemory) {
    for (const int error : {EMFILE, ENFILE, ENOBUFS, ENOMEM}) {
        test::ClientSocket waiting(port);
        waiting.send("shutdown\0"s);
        nextAcceptError = error;
        const test::VirtualTime time;
        server.process();
        EXPECT_EQ(time.waits(), std::vector<milliseconds>{milliseconds(100)}) << error;
    }
}

TEST_F(DescriptorShortage, LetsEveryListenerRestAndComeBack) {
    server.options.inactivity = 5;
    server.initListener("127.0.0.1", 0);
    const std::string where = server.listeners[1].address;
    test::ClientSocket first(port);
    test::ClientSocket second(std::stoi(where.substr(where.find(':') + 1)));
    first.send("hello\0"s);
    second.send("shutdown\0"s);
    nextAcceptError = EMFILE;
    const test::VirtualTime time;
    server.process();
    EXPECT_EQ(time.waits(), std::vector<milliseconds>{milliseconds(100)});
    EXPECT_EQ(server.commands, Lines{"hello"});
}

TEST_F(DescriptorShortage, IsNoneWhereOneConnectionOnlyIsLost) {
    server.options.inactivity = 5;
    for (const int error : {EINTR, EAGAIN, ECONNABORTED}) {
        test::ClientSocket waiting(port);
        waiting.send("shutdown\0"s);
        nextAcceptError = error;
        const test::VirtualTime time;
        server.process();
        EXPECT_TRUE(time.waits().empty()) << error;
    }
    EXPECT_EQ(log.lines(), Lines{"WARN corvane.server.process.listener accept error " +
                                 std::to_string(ECONNABORTED) + " on socket " +
                                 server.listeners.front().address});
}

}  // namespace
}  // namespace corvane
