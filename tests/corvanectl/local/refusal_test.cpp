#include "corvanectl/local/refusal.h"

#include <gtest/gtest.h>

namespace corvane::ctl {
namespace {

using platform::PortUser;

constexpr uid_t self = 4'000'000'001;
constexpr uid_t another = 4'000'000'002;

PortUser socketOf(PortUser::State state, std::optional<uid_t> user) {
    PortUser socket;
    socket.state = state;
    socket.user = user;
    return socket;
}

TEST(RefusingUser, IsTheOtherOneWhoListens) {
    const std::vector<PortUser> sockets{socketOf(PortUser::State::Connected, self),
                                        socketOf(PortUser::State::Listening, another)};
    EXPECT_EQ(refusingUser(sockets, self), std::to_string(another));
    EXPECT_EQ(refusingUser(sockets, another), std::nullopt);
}

TEST(RefusingUser, IsNobodyForRootOrWhereTheSystemDoesNotTell) {
    EXPECT_EQ(refusingUser({socketOf(PortUser::State::Listening, another)}, 0), std::nullopt);
    EXPECT_EQ(refusingUser({socketOf(PortUser::State::Listening, std::nullopt)}, self),
              std::nullopt);
    EXPECT_EQ(refusingUser({socketOf(PortUser::State::Connected, another)}, self), std::nullopt);
    EXPECT_EQ(refusingUser({}, self), std::nullopt);
}

}  // namespace
}  // namespace corvane::ctl
