// What the rest of the program needs of the log: its level, and when lines are written. The lines
// themselves go through log4cpp's categories.
#pragma once

#include <log4cpp/Category.hh>
#include <log4cpp/Priority.hh>

namespace corvane {

/// The least important priority that is logged. All categories take it from the root one; it is
/// kept here as well, since it is asked for several times a request.
class LogLevel {
  public:
    static void set(log4cpp::Priority::Value level) {
        log4cpp::Category::getRoot().setPriority(level);
        level_ = level;
    }
    static log4cpp::Priority::Value get() { return level_; }

  private:
    static inline log4cpp::Priority::Value level_ = log4cpp::Priority::INFO;  // as log4cpp begins
};

/// Whether lines of this priority are logged.
inline bool isLogged(log4cpp::Priority::Value priority) { return LogLevel::get() >= priority; }

/// While one exists, log lines are collected until flushLog(), 64 KiB of them or its end. A line is
/// lost only when the machine stops or the process is killed by SIGKILL between the line and the
/// next of these.
class LogBatch {
  public:
    LogBatch();
    ~LogBatch();
    LogBatch(const LogBatch&) = delete;
    LogBatch& operator=(const LogBatch&) = delete;
    LogBatch(LogBatch&&) = delete;
    LogBatch& operator=(LogBatch&&) = delete;
};

/// Writes all pending lines of all log files. Called before anything that others can observe or
/// that may take long: a reply, a change of files, and, once there is a log file, every wait and
/// every start of a program (platform/waiting.h). Safe in a signal handler.
void flushLog() noexcept;

}  // namespace corvane
