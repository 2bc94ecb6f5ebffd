#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

#include "bench/common/clock.h"
#include "bench/common/net.h"
#include "bench/load/workload.h"

namespace corvane::bench {

namespace {

constexpr std::int64_t START_LIMIT_NANOS = 10'000'000'000;

/// A started program with its output thrown away; ended and waited for by the destructor.
class Program {
  public:
    explicit Program(const std::vector<std::string>& command) {
        std::vector<char*> arguments;
        arguments.reserve(command.size() + 1);
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            ::posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
        }
        const int error =
            ::posix_spawn(&id_, arguments[0], &actions, nullptr, arguments.data(), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        if (error != 0) {
            throw std::system_error(error, std::generic_category(), arguments[0]);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        ::kill(id_, SIGTERM);
        ::waitpid(id_, nullptr, 0);
    }

  private:
    pid_t id_ = 0;
};

Descriptor connectWhenListening(int port, std::int64_t begin) {
    for (;;) {
        try {
            return connectTo(port);
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::connection_refused) {
                throw;
            }
        }
        if (nowNanos() - begin > START_LIMIT_NANOS) {
            throw std::runtime_error("the server does not listen");
        }
        ::usleep(20);  // leaves the core to the server when there is only one
    }
}

}  // namespace

Measurement runStartup(const Workload& load, const std::vector<std::string>& command) {
    if (command.empty()) {
        throw std::invalid_argument("startup needs a command after --");
    }
    Measurement result;
    ReplyReader reader(load.terminator, load.expected);
    for (int i = -load.warmup; i < load.requests; ++i) {
        const std::int64_t begin = nowNanos();
        const Program program(command);
        const Descriptor connection = connectWhenListening(load.port, begin);
        sendAll(connection.get(), load.request);
        result.replyBytes = reader.receive(connection.get());
        const std::int64_t replied = nowNanos();
        if (i >= 0) {
            result.samples.push_back(replied - begin);
            result.seconds += static_cast<double>(replied - begin) / 1e9;
        }
    }
    return result;
}

}  // namespace corvane::bench
