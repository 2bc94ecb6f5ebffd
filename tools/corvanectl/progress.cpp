#include "corvanectl/progress.h"

#include <unistd.h>

#include <array>
#include <iostream>
#include <utility>

#include "corvanectl/terminal.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds beforeTheFirst{1000};
constexpr milliseconds betweenTwo{200};
// Back to the line's begin, and what stands behind it is erased.
constexpr std::string_view emptyLine = "\r\x1b[K";

std::string remaining(double bytesPerSecond, std::size_t bytes, std::size_t total) {
    if (total <= bytes || bytesPerSecond <= 0) {
        return "";
    }
    // Not less than it takes: half a second more before it is rounded.
    return format(", %.0f s left", static_cast<double>(total - bytes) / bytesPerSecond + 0.5);
}

}  // namespace

std::string byteCount(double bytes) {
    constexpr std::array<const char*, 5> units{"B", "kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    while (bytes >= 999.5 && unit + 1 < units.size()) {
        bytes /= 1000;
        ++unit;
    }
    return format(unit == 0 || bytes >= 99.95 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
}

ProgressLine::ProgressLine()
    : ProgressLine(isTerminal(STDERR_FILENO) ? &std::cerr : nullptr, Clock::now) {}

ProgressLine::ProgressLine(std::ostream* out, std::function<Clock::time_point()> now)
    : out_(out), now_(std::move(now)), begin_(now_()), next_(begin_ + beforeTheFirst) {}

ProgressLine::~ProgressLine() {
    if (isShown_) {
        *out_ << emptyLine << std::flush;
    }
}

void ProgressLine::show(std::size_t bytes, std::size_t total) {
    if (out_ == nullptr) {
        return;
    }
    const Clock::time_point now = now_();
    if (now < next_) {
        return;
    }
    next_ = now + betweenTwo;
    isShown_ = true;
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    const double rate = static_cast<double>(bytes) / seconds;
    *out_ << emptyLine << byteCount(static_cast<double>(bytes))
          << (total == 0 ? "" : " of " + byteCount(static_cast<double>(total))) << ", "
          << byteCount(rate) << "/s" << remaining(rate, bytes, total) << std::flush;
}

Observer ProgressLine::observer() {
    return [this](std::size_t sent, std::size_t received) { show(sent + received); };
}

}  // namespace corvane::ctl
