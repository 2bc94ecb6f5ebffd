// Which lines of the server's log "corvanectl log" shows.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvanectl/local/log_line.h"

namespace corvane::ctl {

struct LogView {
    bool follow = false;
    /// Lines of this importance and above.
    Level level = Level::Debug;
    /// An address with or without its port; empty for all.
    std::string client;
    std::string command;

    /// Nothing when these are the parameters of the server's command of the same name: one of them
    /// is no option. Throws Exception for options that make no sense.
    static std::optional<LogView> parse(const std::vector<std::string>& parameters);
};

/// Tells line by line which are shown. A line of another layout than the one before goes with that:
/// it is the rest of a text with line ends.
class LogFilter {
  public:
    explicit LogFilter(LogView view) : view_(std::move(view)) {}

    /// Whether it is shown, and the level that it counts as.
    bool shows(std::string_view line);
    Level level() const { return level_; }

  private:
    LogView view_;
    bool sawDefaultLayout_ = false;
    bool isShown_ = true;
    Level level_ = Level::Unknown;
};

}  // namespace corvane::ctl
