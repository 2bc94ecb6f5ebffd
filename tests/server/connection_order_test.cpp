#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <vector>

#include "server/connections.h"

namespace corvane {
namespace {

class ConnectionOrderTest : public testing::Test {
  protected:
    Connection& add() {
        std::array<int, 2> pair{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()), 0);
        others.emplace_back(pair[1]);
        return connections.add(FileDesc(pair[0]), {});
    }

    Connections connections;
    std::vector<FileDesc> others;
};

TEST_F(ConnectionOrderTest, FindsAConnectionByItsDescriptorOnly) {
    Connection& connection = add();
    EXPECT_EQ(connections.find(connection.sock()), &connection);
    EXPECT_EQ(connections.find(others.front()), nullptr);
    EXPECT_EQ(connections.find(-1), nullptr);
    EXPECT_EQ(connections.find(FD_SETSIZE), nullptr);
}

TEST_F(ConnectionOrderTest, IsThatOfAcceptanceWhateverTheDescriptors) {
    const int first = add().sock();
    const int second = add().sock();
    EXPECT_NE(connections.remove(first), nullptr);
    const Connection& third = add();
    EXPECT_EQ(third.sock(), first) << "the descriptor is used again";
    EXPECT_EQ(connections.descriptors(), (std::vector<int>{second, first}));
    EXPECT_EQ(connections.size(), 2U);
}

TEST_F(ConnectionOrderTest, PutsTheOneThatWasAcceptedFirstFirst) {
    Connection& first = add();
    Connection& second = add();
    EXPECT_EQ(connections.firstReadable(), nullptr);
    connections.markReadable(second);
    EXPECT_EQ(connections.firstReadable(), &second);
    connections.markReadable(first);
    connections.markReadable(first);
    EXPECT_EQ(connections.firstReadable(), &first);
    connections.markDrained(first);
    EXPECT_EQ(connections.firstReadable(), &second);
    connections.markDrained(second);
    EXPECT_FALSE(connections.anyReadable());
}

TEST_F(ConnectionOrderTest, ForgetsAConnectionThatIsRemovedWhileItIsReadable) {
    Connection& connection = add();
    const int sock = connection.sock();
    connections.markReadable(connection);
    EXPECT_NE(connections.remove(sock), nullptr);
    EXPECT_EQ(connections.remove(sock), nullptr);
    EXPECT_EQ(connections.firstReadable(), nullptr);
    EXPECT_TRUE(connections.empty());
}

}  // namespace
}  // namespace corvane
