// The program's log files as log4cpp appenders that can hand the lines of one request to the file
// in a single write. Outside a LogBatch (log/log.h) every line is written at once.
#pragma once

#include <atomic>
#include <cstddef>
#include <log4cpp/FileAppender.hh>
#include <memory>
#include <string>
#include <string_view>

namespace corvane {

/// A log4cpp FileAppender on an open descriptor, which it owns. Inside a LogBatch its lines are
/// collected. Write errors (a full disk) are ignored: a log that cannot be written must not stop
/// the service. Nor must one that nobody reads, a pipe or a stopped terminal, keep the program from
/// stopping: the lines from then on are dropped.
class LogFile : public log4cpp::FileAppender {
  public:
    LogFile(const std::string& name, int fd);
    ~LogFile() override;
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;
    LogFile(LogFile&&) = delete;
    LogFile& operator=(LogFile&&) = delete;

    /// Writes what is pending. Safe in a signal handler: what a fatal signal interrupts may be
    /// written twice, and is never lost.
    void flush() noexcept;

  protected:
    void _append(const log4cpp::LoggingEvent& event) override;

  private:
    void write(std::string_view text) const noexcept;

    bool mayWait_;  // no regular file
    std::unique_ptr<char[]> pending_;
    std::atomic<std::size_t> pendingSize_ = 0;
};

}  // namespace corvane
