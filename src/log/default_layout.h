// The layout of log lines by the default pattern. It writes what log4cpp's PatternLayout writes,
// many times faster: at the default level, laying out its log lines would be most of the work of a
// short request.
#pragma once

#include <ctime>
#include <log4cpp/LoggingEvent.hh>
#include <log4cpp/PatternLayout.hh>
#include <string>

namespace corvane {

inline constexpr const char* defaultPattern = "%d [%p,%c] %m%n";

/// The default pattern: date and time with milliseconds, priority, category, message.
class DefaultLayout : public log4cpp::PatternLayout {
  public:
    DefaultLayout() { setConversionPattern(defaultPattern); }

    std::string format(const log4cpp::LoggingEvent& event) override;

  private:
    /// The text of the last second that was asked for; most lines share it with their neighbours.
    std::time_t second_ = -1;
    std::string secondText_;
};

}  // namespace corvane
