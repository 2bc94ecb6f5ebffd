#include <fcntl.h>

#include <array>
#include <cerrno>
#include <log4cpp/Category.hh>
#include <thread>
#include <vector>

#include "log/log.h"
#include "log/log_file.h"
#include "server/server_fixture.h"
#include "server/socket_exception.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

class SendResponseTest : public ServerFixture {
  protected:
    void send(std::string_view text) {
        server.sendResponse(accepted(), text.data(), static_cast<int>(text.size()));
    }
};

TEST_F(SendResponseTest, EndsAReplyWithExactlyOneZeroByte) {
    test::ClientSocket client = connect();
    send("one");
    send("");
    send("two");
    server.closeSocket(accepted(), true);
    EXPECT_EQ(client.untilEnd(), std::string("one\0\0two\0", 9));
}

// The client may look into the log as soon as it has the reply.
TEST_F(SendResponseTest, WritesPendingLogLinesBefore) {
    const test::ScratchDirectory scratch;
    const std::string path = scratch.file("log");
    LogFile file("log", ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    test::ClientSocket client = connect();
    log4cpp::Category& root = log4cpp::Category::getRoot();
    root.addAppender(file);
    {
        const LogBatch linesOfTheRequest;
        root.notice("served");
        send("reply");
        EXPECT_NE(test::readFile(path).find("served\n"), std::string::npos);
    }
    root.removeAppender(&file);
}

TEST_F(SendResponseTest, JoinsPieces) {
    test::ClientSocket client = connect();
    std::array<std::string_view, 4> pieces{"a", "", "bc", std::string_view("d\0", 2)};
    server.sendTerminated(accepted(), pieces);
    EXPECT_EQ(client.reply(), "abcd");
}

TEST_F(SendResponseTest, JoinsMorePiecesThanItSendsAtOnce) {
    test::ClientSocket client = connect();
    std::string joined;
    for (int number = 100; number < 200; ++number) {
        joined += std::to_string(number);
    }
    std::vector<std::string_view> pieces;
    for (std::size_t at = 0; at < joined.size(); at += 3) {
        pieces.push_back(std::string_view(joined).substr(at, 3));
    }
    pieces.emplace_back("\0", 1);
    server.sendTerminated(accepted(), pieces);
    EXPECT_EQ(client.reply(), joined);
}

TEST_F(SendResponseTest, WaitsForAClientThatReadsSlowly) {
    constexpr int smallBuffer = 4096;
    std::string text;
    while (text.size() < std::size_t{16} * 1024 * 1024) {
        text += std::to_string(text.size()) + ' ';
    }
    test::ClientSocket client = connect(smallBuffer);
    std::string received;
    std::thread reader([&] { received = client.reply(); });
    send(text);
    reader.join();
    EXPECT_TRUE(received == text);
}

TEST_F(SendResponseTest, NeverDiesWhenTheClientIsGone) {
    test::ClientSocket client = connect();
    client.close();
    const std::string text(65'536, 'x');
    EXPECT_THROW(
        {
            while (true) {
                send(text);
            }
        },
        SocketException);
}

TEST_F(SendResponseTest, FailsOnADescriptorThatIsNotOpen) {
    try {
        server.sendResponse(-1, "x", 1);
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.message, "send() error (" + std::to_string(EBADF) + ")");
    }
}

TEST_F(SendResponseTest, GivesAClientThatDoesNotReadUpAfterTheTimeLimit) {
    constexpr int smallBuffer = 4096;
    server.options.requestTimeout = 1;
    test::ClientSocket client = connect(smallBuffer);
    const std::string text(std::size_t{16} * 1024 * 1024, 'x');
    try {
        send(text);
        FAIL();
    } catch (const SocketException& e) {
        EXPECT_EQ(e.message, "send() error (" + std::to_string(ETIMEDOUT) + ")");
    }
    EXPECT_THROW(send("another reply behind half of the first one"), SocketException);
}

TEST_F(SendResponseTest, HasAFatalErrorReplyThatEscapesNothing) {
    test::ClientSocket client = connect();
    server.sendFatalError(accepted(), "a<'b");
    EXPECT_EQ(client.reply(), "<fatalError cmd='a<'b'/>");
}

}  // namespace
}  // namespace corvane
