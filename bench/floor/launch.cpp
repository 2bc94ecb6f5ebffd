#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <system_error>

#include "bench/common/net.h"
#include "bench/floor/handlers.h"

namespace corvane::bench {

namespace {

void letTheSystemReap() {
    if (::signal(SIGCHLD, SIG_IGN) == SIG_ERR) {
        throwErrno("signal");
    }
}

}  // namespace

Handler launchByFork() {
    letTheSystemReap();
    return [reply = plainSuccess("execute")](int socket, std::string_view request) {
        const std::string path(parameter(request));
        const pid_t child = ::fork();
        if (child == -1) {
            throwErrno("fork");
        }
        if (child == 0) {
            ::close_range(0, ~0U, 0);
            std::array<char*, 2> arguments{const_cast<char*>(path.c_str()), nullptr};
            ::execv(path.c_str(), arguments.data());
            ::_exit(255);
        }
        sendAll(socket, reply);
    };
}

Handler launchBySpawn() {
    letTheSystemReap();
    return [reply = plainSuccess("execute")](int socket, std::string_view request) {
        const std::string path(parameter(request));
        std::array<char*, 2> arguments{const_cast<char*>(path.c_str()), nullptr};
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addclosefrom_np(&actions, 0);
        pid_t child = 0;
        const int error =
            ::posix_spawn(&child, path.c_str(), &actions, nullptr, arguments.data(), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        if (error != 0) {
            throw std::system_error(error, std::generic_category(), "posix_spawn");
        }
        sendAll(socket, reply);
    };
}

}  // namespace corvane::bench
