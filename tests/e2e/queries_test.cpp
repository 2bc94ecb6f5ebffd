// Dispatch, and the commands that ask for the user's environment.
#include <filesystem>
#include <fstream>

#include "e2e/server_test.h"
#include "support/sanitized.h"

namespace corvane::test {
namespace {

const std::string cmdLog = "corvane.server.process.client.cmd";

class QueriesTest : public ServerTest {
  protected:
    QueriesTest() { start(); }

    std::string userDirReply(const std::string& hint, const std::string& value) const {
        return success("userDir", valueDetail(value), hint);
    }
};

TEST_F(QueriesTest, WithAnUnknownNameFailAndKeepTheConnection) {
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("Write"), failure("Write"));
    EXPECT_EQ(client.request("a <b> & \"c\" 100%s"), failure("a <b> & \"c\" 100%s"));
    EXPECT_TRUE(server().hasLogged("WARN " + cmdLog + " Client " + client.address() +
                                   ": command 'Write' not found"));
    EXPECT_TRUE(server().hasLogged("WARN " + cmdLog + " Client " + client.address() +
                                   ": command 'a <b> & \"c\" 100%s' not found"));
}

TEST_F(QueriesTest, OfAFlashPlayersPolicyAreUnknown) {
    EXPECT_EQ(server().request("<policy-file-request/>"), failure("<policy-file-request/>"));
}

TEST_F(QueriesTest, TellTheHomeDirectory) {
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("userDir"), userDirReply("userDir", server().home()));
    EXPECT_EQ(client.request("userDir\nDesktop\n"),
              userDirReply("userDir Desktop", server().home()));
    EXPECT_TRUE(server().hasLogged("DEBUG " + cmdLog + ".userDir Client " + client.address() +
                                   ": cmd 'userDir'"));
}

TEST_F(QueriesTest, TellTheDesktop) {
    EXPECT_EQ(server().request("userDir\ndesktop"), userDirReply("userDir desktop", ""));
    const std::string desktop = server().directory().directory("home/Desktop");
    EXPECT_EQ(server().request("userDir\ndesktop"), userDirReply("userDir desktop", desktop));
}

TEST_F(QueriesTest, TellTheTemporaryDirectory) {
    EXPECT_EQ(server().request("tempDir"),
              success("tempDir", valueDetail(server().directory() / "tmp/"), "tempDir"));
}

TEST_F(QueriesTest, SendAPathAsItIs) {
    const ScratchDirectory elsewhere;
    const std::string odd = elsewhere.directory("a&b <c>");
    start("CURRDIR=" + odd + "\n");
    EXPECT_EQ(server().request("currentDir"), currentDirReply(odd + "/"));
}

TEST_F(QueriesTest, WriteIntoTheLog) {
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("log\n\n\n100% done"), success("log"));
    EXPECT_EQ(client.request("log\ngame.level\nWARN\nhello"), success("log"));
    EXPECT_EQ(client.request("log\ngame\nLOUD\nhidden"), failure("log"));
    EXPECT_TRUE(server().hasLogged("INFO ext.log 100% done"));
    EXPECT_TRUE(server().hasLogged("WARN ext.log.game.level hello"));
    EXPECT_EQ(server().log().find("hidden\n"), std::string::npos);
}

TEST_F(QueriesTest, ForTheNetworkFail) {
    ClientSocket client = server().connect();
    EXPECT_EQ(client.request("listNet\noffice"), failure("listNet"));
    const std::string line =
        " " + cmdLog + ".listNet Client " + client.address() + ": cmd 'listNet': group 'office'";
    EXPECT_TRUE(server().hasLogged("DEBUG" + line));
    EXPECT_TRUE(server().hasLogged("ERROR" + line +
                                   " ERROR: 'function netEnum() not implemented on this "
                                   "platform'"));
}

TEST_F(QueriesTest, ForTheClipboardFail) {
    EXPECT_EQ(server().request("clipboardGet"), failure("clipboardGet", "clipboardGet"));
    EXPECT_TRUE(server().hasLogged("ERROR " + cmdLog +
                                   ".clipboardGet clipboardGet() not supported on this platform"));
}

TEST_F(QueriesTest, ForTheUserNameSucceed) {
    const std::string expected = success("userName", valueDetail("?"), "userName");
    const std::size_t name = expected.find('?');
    EXPECT_EQ(server().request("userName").substr(0, name), expected.substr(0, name));
}

TEST_F(QueriesTest, OfALargeRegistryGiveItsMemoryBack) {
    if (isSanitized) {
        GTEST_SKIP() << "sanitizers keep what is freed for a while";
    }
    constexpr int entries = 200'000;
    constexpr long little = 8L * 1024;  // KiB
    std::string registry;
    for (int i = 0; i < entries; ++i) {
        registry +=
            "HKEY_CURRENT_USER/large:" + std::to_string(i) + "=" + std::string(80, 'x') + "\n";
    }
    registry += "HKEY_CURRENT_USER/large:last=here\n";
    const std::filesystem::path directory = server().home() + "/.corvane";
    std::filesystem::create_directories(directory);
    std::ofstream(directory / "registry.txt") << registry;
    ClientSocket client = server().connect();
    client.request("currentDir");
    const long before = server().residentMemory();
    EXPECT_EQ(client.request("regQueryValue\nHKEY_CURRENT_USER\nlarge\nlast"),
              success("regQueryValue", valueDetail("here"), "HKEY_CURRENT_USER/large:last"));
    EXPECT_TRUE(waitUntil([&] { return server().residentMemory() < before + little; }));
}

}  // namespace
}  // namespace corvane::test
