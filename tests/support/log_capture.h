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

namespace corvane::test {

/// Everything from `level` on is caught; the root category's level is put back in the end.
class LogCapture {
  public:
    explicit LogCapture(log4cpp::Priority::Value level = log4cpp::Priority::DEBUG)
        : root_(log4cpp::Category::getRoot()), previousLevel_(root_.getPriority()) {
        root_.setPriority(level);
        root_.addAppender(appender_);
    }
    ~LogCapture() {
        root_.removeAppender(&appender_);
        root_.setPriority(previousLevel_);
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

    log4cpp::Category& root_;
    log4cpp::Priority::Value previousLevel_;
    Lines appender_;
};

}  // namespace corvane::test
