// One line on a terminal that tells how far a transfer is, for transfers that last.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

#include "corvanectl/exchange.h"

namespace corvane::ctl {

/// "12.3 MB": three digits or four, in units of 1000.
std::string byteCount(double bytes);

/// Shows itself from the second second on, a few times each second, and is erased in the end.
class ProgressLine {
  public:
    using Clock = std::chrono::steady_clock;

    /// On standard error, if that is a terminal; else it does nothing.
    ProgressLine();
    ProgressLine(std::ostream* out, std::function<Clock::time_point()> now);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ProgressLine(ProgressLine&&) = delete;
    ProgressLine& operator=(ProgressLine&&) = delete;

    /// `total` is 0 where it is not known.
    void show(std::size_t bytes, std::size_t total = 0);

    /// For a connection: tells of what it has sent and received. Must not outlive this object.
    Observer observer();

  private:
    std::ostream* out_;
    std::function<Clock::time_point()> now_;
    Clock::time_point begin_;
    Clock::time_point next_;
    bool isShown_ = false;
};

}  // namespace corvane::ctl
