// Who may connect when only the server's own user may. Linux only: the look-up's other file needs a
// Mac.
#include <pwd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "server/server_fixture.h"
#include "support/as_user.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using test::AsUser;
using test::ClientSocket;

constexpr uid_t root = 0;
constexpr uid_t kiosk = 4321;
constexpr uid_t stranger = 1;

const std::string refused = "WARN corvane.server.process.listener Client ";

class SameUser : public ServerFixture {
  protected:
    void SetUp() override {
        if (!AsUser::isPossible()) {
            GTEST_SKIP() << "only the superuser can be several users";
        }
        server.options.sameUser = true;
    }
    ClientSocket connectAs(uid_t user) const {
        const AsUser other(user);
        return ClientSocket(port);
    }
    /// Has the server, as a program of this user, accept what waits; returns whether it was kept.
    bool accepts(uid_t serverUser) {
        const AsUser other(serverUser);
        const std::size_t before = server.clients.size();
        server.processListener(server.listeners.front().sock);
        return server.clients.size() > before;
    }

    test::LogCapture log{log4cpp::Priority::WARN};
};

TEST_F(SameUser, IsNotAskedForUnlessTold) {
    server.options.sameUser = false;
    const ClientSocket client = connectAs(stranger);
    EXPECT_TRUE(accepts(kiosk));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(SameUser, AndRootMayConnect) {
    const ClientSocket own = connectAs(kiosk);
    EXPECT_TRUE(accepts(kiosk));
    const ClientSocket roots = connectAs(root);
    EXPECT_TRUE(accepts(kiosk));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(SameUser, KeepsOthersFromSendingAnything) {
    server.options.shutdownOnDisconnect = 1;
    ClientSocket client = connectAs(stranger);
    client.send("hello\0"s);
    EXPECT_FALSE(accepts(kiosk));
    EXPECT_TRUE(client.isEnded());
    EXPECT_TRUE(server.commands.empty());
    EXPECT_EQ(log.lines(), std::vector{refused + client.address() + ": refused, of user 1 (" +
                                       ::getpwuid(stranger)->pw_name + ")"});
}

TEST_F(SameUser, KeepsTheKioskOutOfTheSuperusersServer) {
    const ClientSocket client = connectAs(kiosk);
    EXPECT_FALSE(accepts(root));
    EXPECT_EQ(log.lines(), std::vector{refused + client.address() + ": refused, of user 4321 ()"});
}

TEST_F(SameUser, IsToldApartInHundredsOfConnectionsWithOneWarning) {
    constexpr std::size_t count = 300;
    std::vector<ClientSocket> own;
    std::vector<ClientSocket> others;
    for (std::size_t i = 0; i < count; ++i) {
        own.push_back(connectAs(kiosk));
        ASSERT_TRUE(accepts(kiosk)) << i;
        others.push_back(connectAs(stranger));
        ASSERT_FALSE(accepts(kiosk)) << i;
    }
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(std::all_of(others.begin(), others.end(),
                            [](ClientSocket& each) { return each.isEnded(); }));
    EXPECT_TRUE(std::none_of(own.begin(), own.end(),
                             [](const ClientSocket& each) { return each.hasSomething(); }));
}

TEST_F(SameUser, IsNobodyWhoIsGoneAlready) {
    for (const uid_t serverUser : {kiosk, root}) {
        ClientSocket client = connectAs(stranger);
        client.send("hello\0"s);
        client.close();
        EXPECT_FALSE(accepts(serverUser));
        ClientSocket resetting = connectAs(serverUser);
        resetting.send("hello\0"s);
        resetting.reset();
        EXPECT_FALSE(accepts(serverUser));
    }
    ClientSocket roots = connectAs(root);  // as everybody's looks on older kernels
    roots.close();
    EXPECT_FALSE(accepts(root));
    EXPECT_EQ(log.lines().size(), 1U);
}

}  // namespace
}  // namespace corvane
