#include <signal.h>

#include <atomic>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "soak/promises.h"
#include "soak/scenarios.h"
#include "support/reply.h"

namespace corvane::soak {
namespace {

using std::chrono::microseconds;
using test::failure;

std::mt19937& dice() {
    static std::mt19937 generator{20261121};  // NOLINT: every run shall be the same
    return generator;
}

int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(dice()); }

// Sends signals to the server and its children at random moments until it is destroyed.
class Tormentor {
  public:
    explicit Tormentor(const ServerProcess& server)
        : server_(server), thread_([this] { torment(); }) {}
    ~Tormentor() { stop(); }
    Tormentor(const Tormentor&) = delete;
    Tormentor& operator=(const Tormentor&) = delete;
    Tormentor(Tormentor&&) = delete;
    Tormentor& operator=(Tormentor&&) = delete;

    void stop() {
        stopping_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    std::size_t signals() const { return signals_; }

  private:
    void torment() {
        std::mt19937 own{42};  // NOLINT: every run shall be the same
        while (!stopping_) {
            for (const pid_t child : test::childrenOf(server_.pid())) {
                for (const int sig : choose(own() % 4)) {
                    signals_ += ::kill(child, sig) == 0 ? 1 : 0;
                }
            }
            server_.signal(SIGCHLD);
            ++signals_;
            std::this_thread::sleep_for(microseconds(own() % 1000));
        }
    }

    static std::vector<int> choose(unsigned long way) {
        switch (way) {
            case 0:
                return {SIGTERM};
            case 1:
                return {SIGSTOP, SIGCONT};
            case 2:
                return {SIGSTOP, SIGKILL};
            default:
                return {SIGSTOP, SIGCONT, SIGTERM};
        }
    }

    const ServerProcess& server_;
    std::atomic<bool> stopping_ = false;
    std::atomic<std::size_t> signals_ = 0;
    std::thread thread_;
};

// Keeps asking until the server is gone, which it may be before the first question.
std::size_t repliesUntilEnd(int port) {
    std::size_t replies = 0;
    try {
        ClientSocket client(port);
        client.trySend(std::string("first\0", 6));
        while (client.tryReply()) {
            ++replies;
            client.trySend(std::string("next\0userDir\0", 13));
        }
    } catch (const std::runtime_error&) {
        // It could not even connect.
    }
    return replies;
}

}  // namespace

void childSignals(const Options& options) {
    const std::size_t total = options.scaled(10'000, 300);
    ServerProcess server({.configuration = "log4cpp.priority=DEBUG\n"});
    const std::string execute = std::string("execute\n") + SOAK_CHILD;
    std::size_t requests = 0;
    Tormentor tormentor(server);
    {
        ClientSocket client = server.connect();
        ClientSocket other = server.connect();
        for (std::size_t i = 0; i < total; ++i) {
            const std::string tag = "no-" + std::to_string(i);
            other.send(tag + '\0');
            other.send(tag + '\0');
            expect(client.request(execute).find("SUCCESS") != std::string::npos,
                   "a child is started");
            expect(other.reply() == failure(tag) && other.reply() == failure(tag),
                   "other clients get their replies");
            requests += 3;
        }
    }
    tormentor.stop();
    await([&] { return test::childrenOf(server.pid()).empty(); }, "every child is collected");
    await([&] { return server.descriptors() == server.descriptorsAtStart(); },
          "no descriptor is kept");
    expect(timesLogged(server, "child exited with status") == total, "each child has its log line");
    std::printf("%zu children, %zu signals, %zu requests at DEBUG, no child left", total,
                tormentor.signals(), requests);
    stop(server);
}

void terminations(const Options& options) {
    constexpr int longestRun = 4000;  // microseconds
    const std::size_t total = options.scaled(10'000, 60);
    std::size_t requests = 0;
    for (std::size_t i = 0; i < total; ++i) {
        ServerProcess server({.configuration = "log4cpp.priority=DEBUG\n"});
        std::thread signal([&server, delay = upTo(longestRun)] {
            std::this_thread::sleep_for(microseconds(delay));
            server.signal(SIGTERM);
        });
        requests += repliesUntilEnd(server.port());
        signal.join();
        expectEnd(server);
    }
    std::printf("%zu SIGTERM at random moments under load, %zu replies, each ended within 1 s",
                total, requests);
}

}  // namespace corvane::soak
