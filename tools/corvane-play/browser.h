// The browser that shows the page.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "corvane-play/process.h"

namespace corvane::play {

/// The command line of a browser in full screen with a profile of its own in `profile`.
std::vector<std::string> kioskArguments(const std::string& browser, const std::string& profile,
                                        const std::string& address);

/// A browser in full screen, whose profile is removed after its end.
class Kiosk {
  public:
    /// Starts the first of Chromium, Chrome, Edge and Firefox that is installed. Throws Exception
    /// when there is none, IOException when it cannot be started.
    explicit Kiosk(const std::string& address);
    ~Kiosk();
    Kiosk(const Kiosk&) = delete;
    Kiosk& operator=(const Kiosk&) = delete;
    Kiosk(Kiosk&&) = delete;
    Kiosk& operator=(Kiosk&&) = delete;

    /// Whether the browser has ended; then its status as waitpid(2) tells it.
    std::optional<int> status() { return process_->status(); }

  private:
    std::string profile_;
    std::optional<Process> process_;
};

/// Opens an address in the user's own browser, which stays when this program ends. Throws Exception
/// when nothing is installed that could; its later failure is not noticed.
void openInDefaultBrowser(const std::string& address);

}  // namespace corvane::play
