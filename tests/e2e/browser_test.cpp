// What a web page can do: a browser on the same machine connects to the server and sends an HTTP
// request whose body looks like commands.
#include <filesystem>

#include "e2e/server_test.h"

namespace corvane::test {
namespace {

using namespace std::string_literals;

class BrowserTest : public ServerTest {
  protected:
    std::string attack() const {
        return "POST / HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: text/plain\r\n\r\n\1makeDir\n" +
               target() + "\1shutdown\1";
    }
    std::string target() const { return server().directory() / "made by a web page"; }
    bool isMade() const { return std::filesystem::exists(target()); }

    std::size_t warnings() const {
        std::size_t count = 0;
        for (const std::string& line : server().logLines()) {
            count +=
                line.find("refused, not an application's request") != std::string::npos ? 1 : 0;
        }
        return count;
    }
};

TEST_F(BrowserTest, IsAnsweredAndClosedWithoutRunningItsCommands) {
    ClientSocket browser = start().connect();
    browser.send(attack());
    EXPECT_EQ(browser.untilEnd(), failure("POST / HTTP/1.1") + '\0');
    EXPECT_FALSE(isMade());
    EXPECT_TRUE(server().hasLogged("WARN corvane.server.process.client Client " +
                                   browser.address() +
                                   ": refused, not an application's request: 'POST / HTTP/1.1'"));
    EXPECT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()));
}

TEST_F(BrowserTest, IsRecognisedBeforeItsRequestIsComplete) {
    ClientSocket browser = start().connect();
    browser.send("GET /picture.png HTTP/1.1\r\n");
    EXPECT_EQ(browser.untilEnd(), failure("GET /picture.png HTTP/1.1") + '\0');
}

TEST_F(BrowserTest, IsRecognisedByteByByte) {
    ClientSocket browser = start().connect();
    for (const char c : "PUT /x HTTP/1.1\r\n"s) {
        browser.send({&c, 1});
    }
    EXPECT_EQ(browser.untilEnd(), failure("PUT /x HTTP/1.1") + '\0');
}

TEST_F(BrowserTest, CannotStopTheServerByLeaving) {
    start("SHUTDOWNONDISCONNECT=1\n");
    for (int i = 0; i < 3; ++i) {
        ClientSocket browser = server().connect();
        browser.send(attack());
        browser.untilEnd();
    }
    ClientSocket application = server().connect();
    EXPECT_EQ(application.request("currentDir"), currentDirReply(server().directory().path()));
    EXPECT_FALSE(isMade());
}

TEST_F(BrowserTest, IsWarnedOfOnce) {
    start();
    for (int i = 0; i < 10; ++i) {
        ClientSocket browser = server().connect();
        browser.send(attack());
        browser.untilEnd();
    }
    EXPECT_EQ(warnings(), 1U);
}

TEST_F(BrowserTest, IsRefusedWhenItSpeaksTls) {
    ClientSocket browser = start().connect();
    browser.send("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03"s);
    EXPECT_EQ(browser.untilEnd(), failure("TLS") + '\0');
    EXPECT_EQ(warnings(), 1U);
}

TEST_F(BrowserTest, MayRunCommandsWhenTheGuardIsTurnedOff) {
    start("ALLOWHTTP=true\n");
    ClientSocket browser = server().connect();
    browser.send(attack());
    EXPECT_EQ(browser.reply(), failure("POST / HTTP/1.1"));
    browser.reply();
    EXPECT_EQ(server().wait(), 0);
    EXPECT_TRUE(isMade());
}

}  // namespace
}  // namespace corvane::test
