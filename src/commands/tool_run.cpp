// Running the window tool. Its two output pipes are read while it runs, so that it may write as
// much as it likes, and every wait lets signals in.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <log4cpp/Category.hh>
#include <optional>

#include "commands/wndutil.h"
#include "platform/file_desc.h"
#include "platform/process.h"
#include "platform/waiting.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::wndutil {
namespace {

constexpr int noStatus = -100;
constexpr std::size_t readChunk = 4096;

int toolTimeout = 0;

log4cpp::Category& executeLog() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.wndutil.execute");
    return log;
}

// Appends what can be read without waiting. Returns whether that was the end.
bool readAvailable(int fd, std::string& text) {
    std::array<char, readChunk> chunk{};
    ssize_t count = 0;
    while ((count = ::read(fd, chunk.data(), chunk.size())) > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(count));
    }
    const int error = errno;
    if (count < 0 && error != EAGAIN && error != EINTR) {
        throw IOException("reading pipe fail", error);
    }
    return count == 0;
}

// One output of the tool. Neither end is ever 0, 1 or 2, which the child replaces.
class Pipe {
  public:
    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) {
            throw IOException("pipe() fail", errno);
        }
        const std::array<FileDesc, 2> low{FileDesc(ends[0]), FileDesc(ends[1])};
        readEnd_ = aboveStandard(low[0]);
        writeEnd_ = aboveStandard(low[1]);
        if (readEnd_ >= FD_SETSIZE) {
            throw IOException("pipe() fail", EMFILE);  // it could not be waited for
        }
        ::fcntl(readEnd_, F_SETFL, O_NONBLOCK);
    }

    int readEnd() const { return readEnd_; }
    int writeEnd() const { return writeEnd_; }
    bool atEnd() const { return readEnd_ == -1; }
    void closeWriteEnd() { writeEnd_.close(); }

    // Takes what is there without waiting for more.
    void drain() {
        if (readAvailable(readEnd_, text_)) {
            readEnd_.close();
        }
    }

    // All that was written, waiting for its end.
    std::string whole(const Deadline& deadline) const {
        return atEnd() ? text_ : text_ + readstring(readEnd_, deadline);
    }

  private:
    static FileDesc aboveStandard(int fd) {
        FileDesc moved(::fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        if (moved == -1) {
            throw IOException("pipe() fail", errno);
        }
        return moved;
    }

    FileDesc readEnd_;
    FileDesc writeEnd_;
    std::string text_;
};

void noticeChild(int /*sig*/) {}

// Keeps the server's handler from collecting the tool's status; its end still interrupts a wait.
class ChildSignalKept {
  public:
    ChildSignalKept() {
        struct sigaction action {};
        action.sa_handler = noticeChild;
        action.sa_flags = SA_NOCLDSTOP;
        ::sigaction(SIGCHLD, &action, &previous_);
    }
    ~ChildSignalKept() {
        ::sigaction(SIGCHLD, &previous_, nullptr);
        // Other children may have ended meanwhile: have the server look for them.
        static_cast<void>(::raise(SIGCHLD));
    }
    ChildSignalKept(const ChildSignalKept&) = delete;
    ChildSignalKept& operator=(const ChildSignalKept&) = delete;
    ChildSignalKept(ChildSignalKept&&) = delete;
    ChildSignalKept& operator=(ChildSignalKept&&) = delete;

  private:
    struct sigaction previous_ {};
};

[[noreturn]] void becomeTool(const char* path, char* const* argv, const Pipe& output,
                             const Pipe& errors) {
    ::dup2(output.writeEnd(), STDOUT_FILENO);
    ::dup2(errors.writeEnd(), STDERR_FILENO);
    resetSignals();
    ::execv(path, argv);
    const int error = errno;
    std::array<char, 64> message{};
    const int length = std::snprintf(message.data(), message.size(), "execv() fail err %d", error);
    static_cast<void>(::write(STDERR_FILENO, message.data(), static_cast<std::size_t>(length)));
    ::_exit(error);
}

// A tool that was started and has not been waited for yet.
class Tool {
  public:
    Tool(pid_t pid, Pipe& output, Pipe& errors)
        : pid_(pid), output_(output), errors_(errors), deadline_(deadlineAfter(toolTimeout)) {}

    // Takes the outputs while the tool runs, and returns its wait status.
    int run() {
        while (true) {
            collect(WNOHANG);
            if (status_) {
                return *status_;
            }
            if (!waitForOutput() || stopRequested()) {
                ::kill(pid_, SIGKILL);
                collect(0);
                return *status_;
            }
        }
    }

    const Deadline& deadline() const { return deadline_; }

  private:
    void collect(int options) {
        int status = noStatus;
        const pid_t ended = ::waitpid(pid_, &status, options);
        const int error = errno;
        if (ended == -1) {
            executeLog().error("parent: wait fail %d", error);
        }
        if (ended != 0) {
            status_ = status;
        }
    }

    // Waits for output, the end of the tool or a signal. False when the time is over.
    bool waitForOutput() {
        fd_set readable;
        FD_ZERO(&readable);
        int highest = -1;
        for (const Pipe* pipe : {&output_, &errors_}) {
            if (!pipe->atEnd()) {
                FD_SET(pipe->readEnd(), &readable);
                highest = std::max(highest, pipe->readEnd());
            }
        }
        const int ready = waitForSockets(highest + 1, &readable, nullptr, deadline_);
        for (Pipe* pipe : {&output_, &errors_}) {
            if (ready > 0 && !pipe->atEnd() && FD_ISSET(pipe->readEnd(), &readable)) {
                pipe->drain();
            }
        }
        return ready != 0;
    }

    pid_t pid_;
    Pipe& output_;
    Pipe& errors_;
    Deadline deadline_;
    std::optional<int> status_;
};

std::string result(Tool& tool, const Pipe& output, const Pipe& errors, const char* path) {
    const int status = tool.run();
    if ((status & 0x7F) != 0) {
        throw Exception(format("Program has exited in unusual way (%d) with message: <%s> [%s])",
                               status, errors.whole(tool.deadline()).c_str(), path));
    }
    const int code = (status >> 8) & 0xFF;
    if (code != 0) {
        throw IOException(
            format("Program error: <%s> [%s])", errors.whole(tool.deadline()).c_str(), path), code);
    }
    std::string text = output.whole(tool.deadline());
    executeLog().debug("Output <%s> [%s]", text.c_str(), path);
    return text;
}

}  // namespace

void setToolTimeout(int seconds) { toolTimeout = seconds; }

std::string readstring(int fd, const Deadline& deadline) {
    std::string text;
    while (!readAvailable(fd, text)) {
        if (!waitForSocket(fd, Direction::Read, deadline) || stopRequested()) {
            break;
        }
    }
    return text;
}

std::string execute(const char* path, char* const* argv) {
    if (executeLog().isDebugEnabled()) {
        executeLog().debug("execute: %s", makeCmd(path, argv).c_str());
    }
    Pipe output;
    Pipe errors;
    const ChildSignalKept childSignal;
    const pid_t pid = ::fork();
    if (pid == 0) {
        becomeTool(path, argv, output, errors);
    }
    const int error = errno;
    output.closeWriteEnd();
    errors.closeWriteEnd();
    if (pid == -1) {
        throw IOException("fork() fail", error);
    }
    Tool tool(pid, output, errors);
    return result(tool, output, errors, path);
}

}  // namespace corvane::wndutil
