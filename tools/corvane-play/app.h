// The program from its start to its end: finds what is to be played, gets Corvane, serves the page
// and shows it, and ends with it.
#pragma once

#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <optional>
#include <string>

#include "corvane-play/browser.h"
#include "corvane-play/corvane_program.h"
#include "corvane-play/listener.h"
#include "corvane-play/options.h"
#include "corvane-play/service.h"
#include "corvane-play/subject.h"

namespace corvane::play {

class App {
  public:
    /// `ownDirectory` is that of the program file, with a "/" at its end. Throws Exception for what
    /// is missing.
    App(Options options, const std::string& ownDirectory);

    /// Returns the exit status.
    int run();

  private:
    void serve(std::uint16_t corvanePort);
    void serveMovie(Site& site, std::uint16_t corvanePort) const;
    void show(const std::string& address);
    void waitForSignal();
    void onSignal(int sig);
    void fail(const std::string& why);

    Options options_;
    std::string data_;  ///< the directory of the program's own files
    Subject subject_;
    asio::io_context context_;
    asio::signal_set signals_;
    asio::steady_timer timer_;
    Listener listener_;
    std::optional<Service> service_;
    CorvaneProgram corvane_;
    std::optional<Kiosk> kiosk_;
    int status_ = 0;
};

}  // namespace corvane::play
