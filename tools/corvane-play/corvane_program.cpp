#include "corvane-play/corvane_program.h"

#include <sys/socket.h>
#include <sys/wait.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <iostream>
#include <utility>

#include "text/strings.h"

namespace corvane::play {
namespace {

constexpr std::chrono::milliseconds step(50);
constexpr int stepsOfPatience = 400;  // 20 s
constexpr int stepsOfSilence = 20;    // after a second it is said what is waited for

// A server that has detached itself is no child any more: it is asked to end.
void askToEnd(std::uint16_t port) {
    asio::io_context context;
    Tcp::socket socket(context);
    error_code error;
    socket.connect(Tcp::endpoint(asio::ip::address_v4::loopback(), port), error);
    if (!error) {
        asio::write(socket, asio::buffer("shutdown", sizeof "shutdown"), error);
    }
}

}  // namespace

CorvaneProgram::CorvaneProgram(asio::io_context& context, Installation installation)
    : installation_(std::move(installation)), output_(context), timer_(context) {}

CorvaneProgram::~CorvaneProgram() {
    if (process_ && process_->status() && isReady_ && !installation_.staysInForeground) {
        askToEnd(static_cast<std::uint16_t>(installation_.port));
    }
}

void CorvaneProgram::start(std::function<void(std::uint16_t)> ready,
                           std::function<void(std::string)> failed) {
    ready_ = std::move(ready);
    failed_ = std::move(failed);
    const auto port = static_cast<std::uint16_t>(installation_.port);
    if (port != 0 && isListening(port)) {
        ready_(port);
        return;
    }
    if (installation_.executable.empty()) {
        failed_(format("No Corvane listens on port %d, and there is none to start for that port.",
                       installation_.port));
        return;
    }
    process_.emplace(std::vector<std::string>{installation_.executable}, Process::Output::Piped);
    output_.assign(process_->output().release());
    readOutput();
    watch();
}

void CorvaneProgram::readOutput() {
    output_.async_read_some(asio::buffer(room_), [this](error_code error, std::size_t count) {
        if (error) {
            return;
        }
        if (!isReady_) {
            said_.append(room_.data(), count);
            takePort();
        }
        readOutput();
    });
}

// A server that chooses its port tells it in its log, which the console gets as well.
void CorvaneProgram::takePort() {
    constexpr std::string_view before = "Listening on ";
    const std::size_t start = said_.find(before);
    const std::size_t end = said_.find('\n', start);
    if (installation_.port != 0 || start == std::string::npos || end == std::string::npos) {
        return;
    }
    const std::size_t colon = said_.rfind(':', end);
    installation_.port =
        parsePort(std::string_view(said_).substr(colon + 1, end - colon - 1)).value_or(0);
}

bool CorvaneProgram::isLost() {
    const std::optional<int> status = process_->status();
    return status && (installation_.staysInForeground || *status != 0);
}

void CorvaneProgram::watch() {
    const auto port = static_cast<std::uint16_t>(installation_.port);
    if (isLost()) {
        return failed_("Corvane has not started:\n" + said_);
    }
    if (port != 0 && isListening(port)) {
        isReady_ = true;
        said_.clear();
        return ready_(port);
    }
    if (++steps_ == stepsOfPatience) {
        return failed_("Corvane has been started, but does not listen:\n" + said_);
    }
    if (steps_ == stepsOfSilence) {
        std::cerr << "corvane-play: waiting for Corvane to start" << std::endl;
    }
    timer_.expires_after(step);
    timer_.async_wait([this](error_code error) {
        if (!error) {
            watch();
        }
    });
}

bool CorvaneProgram::hasEnded() { return isReady_ && isLost(); }

}  // namespace corvane::play
