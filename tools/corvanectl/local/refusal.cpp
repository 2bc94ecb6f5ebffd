#include "corvanectl/local/refusal.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>

#include "platform/peer_user.h"

namespace corvane::ctl {

std::optional<std::string> refusingUser(const std::vector<platform::PortUser>& sockets,
                                        uid_t self) {
    const auto listener =
        std::find_if(sockets.begin(), sockets.end(), [](const platform::PortUser& each) {
            return each.state == platform::PortUser::State::Listening;
        });
    if (self == 0 || listener == sockets.end() || !listener->user || *listener->user == self) {
        return std::nullopt;
    }
    const std::string name = platform::userName(*listener->user);
    return name.empty() ? std::to_string(*listener->user) : name;
}

std::optional<std::string> whoRefuses(int port, bool waitForEnd) {
    constexpr int pause = 50;  // milliseconds
    for (int tries = waitForEnd ? 20 : 0; tries > 0; --tries) {
        if (!refusingUser(platform::portUsers(port), ::geteuid())) {
            return std::nullopt;
        }
        ::poll(nullptr, 0, pause);
    }
    return refusingUser(platform::portUsers(port), ::geteuid());
}

}  // namespace corvane::ctl
