#include "log/log_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <log4cpp/Layout.hh>
#include <log4cpp/LoggingEvent.hh>

#include "log/log.h"
#include "platform/io.h"
#include "platform/stoppable_write.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

// The console and the file; a plain array, since a crash handler walks it.
std::array<LogFile*, 4> openLogs{};
int batchDepth = 0;
constexpr std::size_t maxPending = std::size_t{64} * 1024;

bool isRegularFile(int fd) {
    struct stat info {};
    return ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

LogFile::LogFile(const std::string& name, int fd)
    : log4cpp::FileAppender(name, fd),
      mayWait_(!isRegularFile(fd)),
      pending_(new char[maxPending]) {
    beforeEveryWait(flushLog);
    if (auto* const slot = std::find(openLogs.begin(), openLogs.end(), nullptr);
        slot != openLogs.end()) {
        *slot = this;
    }
}

LogFile::~LogFile() {
    flush();
    std::replace(openLogs.begin(), openLogs.end(), this, static_cast<LogFile*>(nullptr));
}

void LogFile::write(std::string_view text) const noexcept {
    if (mayWait_) {
        writeUntilStop(_fd, text);
    } else {
        writeAll(_fd, text);
    }
}

void LogFile::flush() noexcept {
    if (pendingSize_ != 0) {
        const int savedErrno = errno;
        write({pending_.get(), pendingSize_});
        pendingSize_ = 0;
        errno = savedErrno;
    }
}

void LogFile::_append(const log4cpp::LoggingEvent& event) {
    const std::string line = _getLayout().format(event);
    if (pendingSize_ + line.size() > maxPending) {
        flush();
    }
    if (batchDepth == 0 || line.size() > maxPending) {
        write(line);
        return;
    }
    std::copy(line.begin(), line.end(), pending_.get() + pendingSize_);
    pendingSize_ += line.size();  // last, for a signal handler that flushes
}

LogBatch::LogBatch() { ++batchDepth; }

LogBatch::~LogBatch() {
    if (--batchDepth == 0) {
        flushLog();
    }
}

void flushLog() noexcept {
    for (LogFile* log : openLogs) {
        if (log != nullptr) {
            log->flush();
        }
    }
}

}  // namespace corvane
