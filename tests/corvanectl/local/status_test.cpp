#include "corvanectl/local/status.h"

#include <gtest/gtest.h>

#include "support/thrown.h"
#include "text/exception.h"

namespace corvane::ctl::local {
namespace {

using Port = ServerState::Port;

ServerState running() {
    ServerState state;
    state.port = Port::Corvane;
    state.process = 7;
    state.executable = "/usr/lib/corvane/corvane";
    state.user = "kiosk";
    state.startedAt = 1000;
    state.address = "127.0.0.1:54321";
    state.version = "2.7.5.7";
    state.directory = "/usr/lib/corvane/";
    state.log = "/home/kiosk/.cv54321.log";
    state.connections = {"127.0.0.1:40000", "127.0.0.1:40001"};
    return state;
}

bool hasLine(const std::string& text, const std::string& line) {
    return text.find("\n  " + line + "\n") != std::string::npos;
}

TEST(StatusText, NamesEverythingThatIsKnown) {
    const std::string text = statusText(running(), 54321, 1000 + 3600 * 2 + 60 * 5);
    EXPECT_EQ(text.substr(0, text.find('\n')), "Corvane is running.");
    EXPECT_TRUE(hasLine(text, "process        7 (/usr/lib/corvane/corvane)")) << text;
    EXPECT_TRUE(hasLine(text, "user           kiosk"));
    EXPECT_NE(text.find(" (2 h 5 min)\n"), std::string::npos);
    EXPECT_TRUE(hasLine(text, "version        2.7.5.7"));
    EXPECT_TRUE(hasLine(text, "configuration  none, the defaults hold"));
    EXPECT_TRUE(hasLine(text, "connections    2: 127.0.0.1:40000, 127.0.0.1:40001"));
}

TEST(StatusText, SaysWhatCannotBeSeen) {
    ServerState state;
    state.port = Port::Hidden;
    state.address = "127.0.0.1:1";
    state.user = "other";
    const std::string text = statusText(state, 1, 0);
    EXPECT_NE(text.find("most likely Corvane; its process is another user's"), std::string::npos);
    for (const char* line :
         {"process        cannot be seen", "user           other", "since          cannot be seen",
          "address        127.0.0.1:1", "version        not told by the log",
          "configuration  cannot be seen", "log            cannot be seen"}) {
        EXPECT_TRUE(hasLine(text, line)) << line;
    }
}

TEST(StatusText, IsOneSentenceWithoutAServer) {
    ServerState state;
    EXPECT_EQ(statusText(state, 5, 0), "Corvane is not running on port 5.\n");
    state.port = Port::Connection;
    EXPECT_NE(statusText(state, 5, 0).find("a connection has it"), std::string::npos);
}

TEST(StatusText, GivesTheTerminalNoCommands) {
    ServerState state = running();
    state.log = "/home/\x1b[2J";
    EXPECT_EQ(statusText(state, 1, 1000).find('\x1b'), std::string::npos);
}

TEST(StatusJson, HasNullForWhatIsNotKnown) {
    EXPECT_EQ(statusJson({}, 5),
              R"({"running": false, "certain": true, "port": 5, "process": null, )"
              R"("executable": null, "user": null, "startedAt": null, "address": null, )"
              R"("version": null, "configuration": null, "log": null, "connections": []})");
    const std::string text = statusJson(running(), 54321);
    EXPECT_NE(text.find(R"("process": 7, )"), std::string::npos);
    EXPECT_NE(text.find(R"("startedAt": 1000, )"), std::string::npos);
    EXPECT_NE(text.find(R"(["127.0.0.1:40000", "127.0.0.1:40001"])"), std::string::npos);
}

TEST(Status, TellsNothingOfOtherMachines) {
    Invocation invocation;
    invocation.endpoint.host = "192.0.2.1";
    EXPECT_EQ(test::thrownBy<Exception>([&] { status(invocation); }),
              "this looks at the machine that it runs on, not at '192.0.2.1'");
}

}  // namespace
}  // namespace corvane::ctl::local
