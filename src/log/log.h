// The program's log files as log4cpp appenders that can hand the lines of one request to the file
// in a single write. Outside a LogBatch every line is written at once.
#pragma once

#include <log4cpp/Category.hh>
#include <log4cpp/FileAppender.hh>
#include <log4cpp/Priority.hh>
#include <string>

namespace corvane {

/// A log4cpp FileAppender on an open descriptor, which it owns. Inside a LogBatch its lines are
/// collected; a line is lost only when the machine stops or the process is killed by SIGKILL
/// between the line and the end of the batch. Write errors (a full disk) are ignored: a log that
/// cannot be written must not stop the service.
class LogFile : public log4cpp::FileAppender {
  public:
    LogFile(const std::string& name, int fd);
    ~LogFile() override;
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;
    LogFile(LogFile&&) = delete;
    LogFile& operator=(LogFile&&) = delete;

    /// Writes what is pending. Allocates nothing, so that a crash handler may call it.
    void flush() noexcept;

  protected:
    void _append(const log4cpp::LoggingEvent& event) override;

  private:
    std::string pending_;
};

/// While one exists, log lines are collected until flushLog() or its end.
class LogBatch {
  public:
    LogBatch();
    ~LogBatch();
    LogBatch(const LogBatch&) = delete;
    LogBatch& operator=(const LogBatch&) = delete;
    LogBatch(LogBatch&&) = delete;
    LogBatch& operator=(LogBatch&&) = delete;
};

/// The least important priority that is logged. All categories take it from the root one; it is
/// kept here as well, since it is asked for several times a request.
class LogLevel {
  public:
    static void set(log4cpp::Priority::Value level);
    static log4cpp::Priority::Value get() { return level_; }

  private:
    static inline log4cpp::Priority::Value level_ = log4cpp::Priority::INFO;  // as log4cpp begins
};

/// Whether lines of this priority are logged.
inline bool isLogged(log4cpp::Priority::Value priority) { return LogLevel::get() >= priority; }

/// Writes all pending lines of all log files. Called before anything that others can observe or
/// that may take long: a reply, a wait, the start of a program, a change of files.
void flushLog() noexcept;

/// Makes a fatal signal (SIGSEGV, SIGABRT and their like) write the pending lines before it ends
/// the process. A handler that somebody else installed, a sanitizer for one, is left alone.
void flushLogOnCrash();

}  // namespace corvane
