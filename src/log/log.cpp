#include "log/log.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <log4cpp/Layout.hh>
#include <string_view>

#include "platform/waiting.h"

namespace corvane {
namespace {

// The console and the file; a plain array, since a crash handler walks it.
std::array<LogFile*, 4> openLogs{};
int batchDepth = 0;
bool linesPending = false;
constexpr std::size_t maxPending = std::size_t{64} * 1024;

void writeAll(int fd, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(fd, text.data(), text.size());
        if (written > 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return;
        }
    }
}

void crashHandler(int sig) {
    flushLog();
    static_cast<void>(::raise(sig));  // SA_RESETHAND restored the default action
}

}  // namespace

LogFile::LogFile(const std::string& name, int fd) : log4cpp::FileAppender(name, fd) {
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

void LogFile::flush() noexcept {
    writeAll(_fd, pending_);
    pending_.clear();
}

void LogFile::_append(const log4cpp::LoggingEvent& event) {
    const std::string line = _getLayout().format(event);
    if (batchDepth == 0) {
        writeAll(_fd, line);
        return;
    }
    if (pending_.size() + line.size() > maxPending) {
        flush();
    }
    if (line.size() > maxPending) {
        writeAll(_fd, line);
    } else {
        pending_ += line;
        linesPending = true;
    }
}

LogBatch::LogBatch() { ++batchDepth; }

LogBatch::~LogBatch() {
    if (--batchDepth == 0) {
        flushLog();
    }
}

void LogLevel::set(log4cpp::Priority::Value level) {
    log4cpp::Category::getRoot().setPriority(level);
    level_ = level;
}

void flushLog() noexcept {
    if (!linesPending) {
        return;
    }
    const int savedErrno = errno;
    linesPending = false;
    for (LogFile* log : openLogs) {
        if (log != nullptr) {
            log->flush();
        }
    }
    errno = savedErrno;
}

void flushLogOnCrash() {
    for (const int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        struct sigaction current {};
        if (::sigaction(sig, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) {
            struct sigaction action {};
            action.sa_handler = crashHandler;
            action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);  // unsigned on Linux
            ::sigaction(sig, &action, nullptr);
        }
    }
}

}  // namespace corvane
