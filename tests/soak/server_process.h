// The real server in a directory of its own, and what the system knows about it: descriptors,
// memory, processor time, children.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace soak {

/// How the server is set up: what it logs, which has to include NOTICE, and its limit of
/// descriptors (0 for the one of this process).
struct Setup {
    std::string priority = "NOTICE";
    unsigned descriptors = 0;
};

class ServerProcess {
  public:
    /// Starts it and waits until it listens.
    ServerProcess(const std::filesystem::path& executable, const Setup& setup);
    /// Kills it, if it still runs, and removes its directory.
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;
    ServerProcess(ServerProcess&&) = delete;
    ServerProcess& operator=(ServerProcess&&) = delete;

    int port() const { return port_; }
    pid_t pid() const { return pid_; }
    const std::filesystem::path& home() const { return home_; }
    /// The directory that it was started in.
    const std::filesystem::path& work() const { return work_; }

    void send(int sig) const;
    /// Waits for its end, which has to be with status 0. Returns how long that took.
    std::chrono::milliseconds waitForEnd();
    /// SIGTERM and waitForEnd(), which may take a second; the log has to end as it should.
    void stop();

    std::size_t descriptorCount() const;
    long residentKiB() const;
    std::chrono::milliseconds processorTime() const;
    /// Whether the process waits for something (proc(5), state S).
    bool isAsleep() const;
    std::vector<pid_t> children() const;
    std::filesystem::path logFile() const;
    /// How often `text` occurs in the log.
    std::size_t logged(const std::string& text) const;

  private:
    std::string logText() const;
    bool findPort();

    std::filesystem::path root_;
    std::filesystem::path home_;
    std::filesystem::path work_;
    pid_t pid_ = -1;
    int port_ = 0;
};

/// Ends the scenario with a message unless `kept`.
void expect(bool kept, const std::string& promise);

/// Waits until `condition` holds, at most ten seconds.
template <typename Condition>
void waitUntil(Condition condition, const std::string& promise);

/// Sleeps for a moment between two looks at something.
void pause();

template <typename Condition>
void waitUntil(Condition condition, const std::string& promise) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        expect(std::chrono::steady_clock::now() < end, promise);
        pause();
    }
}

}  // namespace soak
