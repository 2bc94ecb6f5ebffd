// Catches what the program logs while a test runs: an appender on the root category that keeps the
// lines in memory, as "LEVEL category message".
#pragma once

#include <algorithm>
#include <log4cpp/AppenderSkeleton.hh>
#include <log4cpp/Category.hh>
#include <log4cpp/LoggingEvent.hh>
#include <log4cpp/Priority.hh>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "log/log.h"

namespace corvane::test {

/// Everything from `level` on is caught; the level is put back in the end.
class LogCapture {
  public:
    explicit LogCapture(log4cpp::Priority::Value level = log4cpp::Priority::DEBUG)
        : previousLevel_(LogLevel::get()) {
        LogLevel::set(level);
        log4cpp::Category::getRoot().addAppender(appender_);
    }
    ~LogCapture() {
        log4cpp::Category::getRoot().removeAppender(&appender_);
        LogLevel::set(previousLevel_);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    LogCapture(LogCapture&&) = delete;
    LogCapture& operator=(LogCapture&&) = delete;

    const std::vector<std::string>& lines() const { return appender_.lines; }

    /// The lines so far, which are forgotten.
    std::vector<std::string> take() { return std::exchange(appender_.lines, {}); }

    bool contains(std::string_view line) const {
        return std::find(lines().begin(), lines().end(), line) != lines().end();
    }

  private:
    struct Lines : log4cpp::AppenderSkeleton {
        Lines() : AppenderSkeleton("log capture") {}

        void close() override {}
        bool requiresLayout() const override { return false; }
        void setLayout(log4cpp::Layout* layout) override { delete layout; }
        void _append(const log4cpp::LoggingEvent& event) override {
            lines.push_back(log4cpp::Priority::getPriorityName(event.priority) + " " +
                            event.categoryName + " " + event.message);
        }

        std::vector<std::string> lines;
    };

    log4cpp::Priority::Value previousLevel_;
    Lines appender_;
};

}  // namespace corvane::test
