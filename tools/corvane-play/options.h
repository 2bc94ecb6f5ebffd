// The command line of corvane-play.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "corvane-play/flashvars.h"
#include "corvane-play/target.h"
#include "text/exception.h"

namespace corvane::play {

/// A command line that cannot be followed.
class UsageError : public Exception {
  public:
    using Exception::Exception;
};

struct Options {
    enum class Action { Play, Bridge, Help, Version };
    enum class Browser { Default, Kiosk, None };

    Action action = Action::Play;
    std::string subject;  ///< the movie, directory or page; empty but for Play
    Browser browser = Browser::Default;
    bool stay = false;   ///< goes on when the page is gone
    bool scale = false;  ///< the movie fills the window
    Flashvars flashvars;
    std::vector<Target> allowedTargets;  ///< besides Corvane
    std::vector<std::string> allowedOrigins;
    std::optional<std::uint16_t> port;  ///< Corvane's, instead of the configured one
    std::string configuration;          ///< a file or a directory; empty for the installed one
};

/// The text that --help prints.
extern const std::string_view helpText;

/// Reads the words after the program's name. A value stands behind "=" or in the next word; "--"
/// ends the options. Throws UsageError.
Options parseOptions(std::span<const char* const> words);

}  // namespace corvane::play
