// The Corvane that an application talks to: the one that runs on the configured port, or one that
// is started for it and ended with it.
#pragma once

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "corvane-play/net.h"
#include "corvane-play/options.h"
#include "corvane-play/process.h"

namespace corvane::play {

/// Where Corvane is and what its configuration says of it.
struct Installation {
    std::string executable;  ///< empty when there is none to start
    int port = 0;            ///< 0 when the system chooses it
    bool staysInForeground = true;
};

/// Reads the configuration that the options name, or the one beside the installed Corvane, which is
/// looked for around this program's own directory. Throws Exception.
Installation findInstallation(const Options& options, const std::string& ownDirectory);

/// Whether something listens on a port of this machine. It does not connect: a server may be told
/// to end when a client goes.
bool isListening(std::uint16_t port);

class CorvaneProgram {
  public:
    CorvaneProgram(asio::io_context& context, Installation installation);
    /// Ends what was started.
    ~CorvaneProgram();
    CorvaneProgram(const CorvaneProgram&) = delete;
    CorvaneProgram& operator=(const CorvaneProgram&) = delete;
    CorvaneProgram(CorvaneProgram&&) = delete;
    CorvaneProgram& operator=(CorvaneProgram&&) = delete;

    /// Calls `ready` with the port when it serves, at once when it does so already, or `failed`
    /// with the reason when it cannot be started.
    void start(std::function<void(std::uint16_t)> ready, std::function<void(std::string)> failed);

    /// To be called when a child has ended: whether it was the Corvane that serves.
    bool hasEnded();

  private:
    void readOutput();
    void takePort();
    void watch();
    bool isLost();

    Installation installation_;
    std::optional<Process> process_;
    asio::posix::stream_descriptor output_;
    asio::steady_timer timer_;
    std::array<char, 4096> room_{};
    std::string said_;
    int steps_ = 0;
    bool isReady_ = false;
    std::function<void(std::uint16_t)> ready_;
    std::function<void(std::string)> failed_;
};

}  // namespace corvane::play
