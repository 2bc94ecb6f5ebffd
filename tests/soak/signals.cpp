#include <signal.h>

#include <atomic>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "soak/client.h"
#include "soak/scenarios.h"
#include "soak/server_process.h"

namespace soak {
namespace {

using std::chrono::microseconds;

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
            for (const pid_t child : server_.children()) {
                for (const int sig : choose(own() % 4)) {
                    signals_ += ::kill(child, sig) == 0 ? 1 : 0;
                }
            }
            server_.send(SIGCHLD);
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
        Client client(port);
        std::string reply;
        client.send(std::string("first\0", 6));
        while (client.tryReply(reply)) {
            ++replies;
            client.send(std::string("next\0userDir\0", 13));
        }
    } catch (const std::runtime_error&) {
        // It could not even connect.
    }
    return replies;
}

}  // namespace

void childSignals(const Options& options) {
    const std::size_t total = options.scaled(10'000, 300);
    ServerProcess server(options.server, {.priority = "DEBUG"});
    const std::size_t descriptors = server.descriptorCount();
    const std::string execute = "execute\n" + std::filesystem::absolute(options.child).string();
    std::size_t requests = 0;
    Tormentor tormentor(server);
    {
        Client client(server.port());
        Client other(server.port());
        for (std::size_t i = 0; i < total; ++i) {
            const std::string tag = "no-" + std::to_string(i);
            other.send(std::string_view(tag.c_str(), tag.size() + 1));
            other.send(std::string_view(tag.c_str(), tag.size() + 1));
            expect(client.ask(execute).find("SUCCESS") != std::string::npos, "a child is started");
            expect(other.reply() == unknownReply(tag) && other.reply() == unknownReply(tag),
                   "other clients get their replies");
            requests += 3;
        }
    }
    tormentor.stop();
    waitUntil([&] { return server.children().empty(); }, "every child is collected");
    waitUntil([&] { return server.descriptorCount() == descriptors; }, "no descriptor is kept");
    expect(server.logged("child exited with status") == total, "each child has its log line");
    std::printf("%zu children, %zu signals, %zu requests at DEBUG, no child left", total,
                tormentor.signals(), requests);
    server.stop();
}

void terminations(const Options& options) {
    constexpr int longestRun = 4000;  // microseconds
    const std::size_t total = options.scaled(10'000, 60);
    std::size_t requests = 0;
    for (std::size_t i = 0; i < total; ++i) {
        ServerProcess server(options.server, {.priority = "DEBUG"});
        std::thread signal([&server, delay = upTo(longestRun)] {
            std::this_thread::sleep_for(microseconds(delay));
            server.send(SIGTERM);
        });
        requests += repliesUntilEnd(server.port());
        signal.join();
        expect(server.waitForEnd() <= std::chrono::seconds(1), "SIGTERM ends the server in time");
        expect(server.logged("application terminated") == 1, "the log tells of the end");
    }
    std::printf("%zu SIGTERM at random moments under load, %zu replies, each ended within 1 s",
                total, requests);
}

}  // namespace soak
