#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "cvnwinfo/x11/tool_fixture.h"

namespace corvane::x11test {
namespace {

Environment withDisplay(const std::string& name) {
    Environment environment;
    environment.set("DISPLAY", name);
    return environment;
}

// A TCP port of this machine that refuses connections, or takes them and says nothing.
class SilentServer {
  public:
    enum class Behaviour { refuse, accept };

    explicit SilentServer(Behaviour behaviour)
        : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        socklen_t length = sizeof(address);
        EXPECT_EQ(bind(socket_.number(), generic, length), 0);
        EXPECT_EQ(getsockname(socket_.number(), generic, &length), 0);
        if (behaviour == Behaviour::accept) {
            EXPECT_EQ(listen(socket_.number(), 1), 0);
        }
        // Display 0 has port 6000; the ports that a system picks by itself are higher.
        display_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - 6000);
    }

    const std::string& display() const { return display_; }

    // All that the first client has sent, which has gone meanwhile.
    std::string received() const {
        const Descriptor client(accept(socket_.number(), nullptr, nullptr));
        std::string all;
        std::array<char, 256> chunk = {};
        ssize_t got = 0;
        while ((got = read(client.number(), chunk.data(), chunk.size())) > 0) {
            all.append(chunk.data(), static_cast<std::size_t>(got));
        }
        return all;
    }

  private:
    Descriptor socket_;
    std::string display_;
};

TEST(ToolWithoutDisplay, SaysThatDisplayIsNotSet) {
    Environment environment;
    environment.unset("DISPLAY");
    const Outcome outcome = runTool(environment, {"-a"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "cvnwinfo: no X display: the environment variable DISPLAY is not set\n");
    EXPECT_EQ(outcome.output, "");
}

TEST(ToolWithoutDisplay, SaysThatDisplayNamesNone) {
    const Outcome outcome = runTool(withDisplay("nonsense"), {"-g", "-n", "T"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors,
              "cvnwinfo: the environment variable DISPLAY names no X display: 'nonsense'\n");
}

TEST(ToolWithoutDisplay, SaysThatItCannotConnect) {
    const SilentServer server(SilentServer::Behaviour::refuse);
    const Outcome outcome = runTool(withDisplay(server.display()), {"-n", "T", "-p", "1,2"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "cvnwinfo: cannot connect to the X display '" + server.display() +
                                  "': no X server there, or it refuses this user\n");
}

TEST(ToolWithoutDisplay, GivesUpOnAServerThatDoesNotAnswer) {
    const SilentServer server(SilentServer::Behaviour::accept);
    const Outcome outcome = runTool(withDisplay(server.display()), {"-a"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "cvnwinfo: the X server does not answer\n");
}

// The connection to the X server must not get the number of a standard descriptor that is closed.
TEST(ToolWithoutDisplay, SendsTheServerNoMessageThatNobodyElseCanRead) {
    const SilentServer server(SilentServer::Behaviour::accept);
    const Outcome outcome = runProgram({"sh", "-c", "exec \"$0\" -a 2>&-", CVNWINFO_PROGRAM},
                                       withDisplay(server.display()));
    EXPECT_EQ(outcome.status, 1);
    const std::string received = server.received();
    EXPECT_NE(received, "");
    EXPECT_EQ(received.find("cvnwinfo"), std::string::npos);
}

TEST(ToolWithoutDisplay, RefusesAWrongCommandLine) {
    const Outcome outcome = runTool(Environment(), {"-g"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors,
              "cvnwinfo: no window given: option -n TITLE is missing (see cvnwinfo --help)\n");
    EXPECT_EQ(outcome.output, "");
}

TEST(ToolWithoutDisplay, PrintsItsVersion) {
    const Outcome outcome = runTool(Environment(), {"--version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "cvnwinfo " CVNWINFO_VERSION "\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(ToolWithoutDisplay, PrintsItsUsage) {
    const Outcome outcome = runTool(Environment(), {"--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output.starts_with("usage: cvnwinfo -g -n TITLE "));
}

}  // namespace
}  // namespace corvane::x11test
