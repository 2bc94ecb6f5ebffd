#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/xproto.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <future>
#include <vector>

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

    // The next client; waits for one.
    Descriptor client() const { return Descriptor(accept(socket_.number(), nullptr, nullptr)); }

    // All that the first client has sent, which has gone meanwhile.
    std::string received() const {
        const Descriptor first = client();
        std::string all;
        std::array<char, 256> chunk = {};
        ssize_t got = 0;
        while ((got = read(first.number(), chunk.data(), chunk.size())) > 0) {
            all.append(chunk.data(), static_cast<std::size_t>(got));
        }
        return all;
    }

  private:
    Descriptor socket_;
    std::string display_;
};

template <typename Record>
bool receive(const Descriptor& client, Record& record) {
    return recv(client.number(), &record, sizeof record, MSG_WAITALL) == sizeof record;
}

void skip(const Descriptor& client, std::size_t count) {
    std::vector<char> bytes(count);
    if (count != 0) {  // for none it would wait as well
        EXPECT_EQ(recv(client.number(), bytes.data(), count, MSG_WAITALL),
                  static_cast<ssize_t>(count));
    }
}

template <typename Record>
void send(const Descriptor& client, const Record& record) {
    EXPECT_EQ(send(client.number(), &record, sizeof record, MSG_NOSIGNAL), sizeof record);
}

// Answers as an X server with one screen: lets the client in.
void welcome(const Descriptor& client) {
    const auto padded = [](std::size_t length) { return (length + 3) / 4 * 4; };
    xcb_setup_request_t request = {};
    EXPECT_TRUE(receive(client, request));
    skip(client, padded(request.authorization_protocol_name_len) +
                     padded(request.authorization_protocol_data_len));
    struct Answer {
        xcb_setup_t setup;
        xcb_screen_t screen;
    };
    constexpr std::size_t before = 8;  // bytes of a set-up that its length leaves out
    Answer answer = {};
    answer.setup.status = 1;
    answer.setup.protocol_major_version = 11;
    answer.setup.length = (sizeof answer - before) / 4;
    answer.setup.resource_id_mask = 0xFFFFF;
    answer.setup.maximum_request_length = 0xFFFF;
    answer.setup.roots_len = 1;
    answer.screen.root = 1;
    send(client, answer);
}

// Goes on as an X server that knows all atoms, and hangs up when it is asked for anything else.
void answerAtoms(const Descriptor& client) {
    struct Request {
        std::uint8_t kind;
        std::uint8_t detail;
        std::uint16_t length;  // in units of four bytes, this one included
    };
    struct Answer {
        xcb_intern_atom_reply_t atom;
        std::array<char, 32 - sizeof(xcb_intern_atom_reply_t)> rest;
    };
    welcome(client);
    Request request = {};
    for (std::uint16_t number = 1; receive(client, request); ++number) {
        if (request.kind != XCB_INTERN_ATOM) {
            return;
        }
        skip(client, 4 * std::size_t{request.length} - sizeof request);
        Answer answer = {};
        answer.atom.response_type = 1;
        answer.atom.sequence = number;
        answer.atom.atom = number;
        send(client, answer);
    }
}

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

// A window that cannot be looked for is not missing, nor is a screen without size.
TEST(ToolWithoutDisplay, SaysThatTheServerHangsUpWhileItIsAsked) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"-g", "-n", "T"}, {"-n", "T", "-p", "1,2"}, {"-a"}}) {
        const SilentServer server(SilentServer::Behaviour::accept);
        const auto serving =
            std::async(std::launch::async, [&server] { answerAtoms(server.client()); });
        const Outcome outcome = runTool(withDisplay(server.display()), arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors, "cvnwinfo: the connection to the X server broke\n");
        EXPECT_EQ(outcome.output, "");
    }
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
