#include "platform/child.h"

#include <sys/select.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "text/exception.h"

namespace corvane {
namespace {

constexpr int noStatus = -100;
constexpr int statusCannotExecute = 255;

void noticeChild(int /*sig*/) {}

void replace(int fd, const std::optional<OutputPipe>& pipe) {
    if (pipe) {
        ::dup2(pipe->writeEnd(), fd);
    }
}

}  // namespace

// The signal is blocked, so that none is missed between a look at the child and the next wait.
ChildSignalHold::ChildSignalHold() {
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    ::sigprocmask(SIG_BLOCK, &child, &previousMask_);
    struct sigaction action {};
    action.sa_handler = noticeChild;
    action.sa_flags = SA_NOCLDSTOP;
    ::sigaction(SIGCHLD, &action, &previousAction_);
}

ChildSignalHold::~ChildSignalHold() {
    ::sigaction(SIGCHLD, &previousAction_, nullptr);
    // Other children may have ended meanwhile.
    static_cast<void>(::raise(SIGCHLD));
    ::sigprocmask(SIG_SETMASK, &previousMask_, nullptr);
}

Child::Child(Capture capture, Group group, const std::function<void()>& become) : group_(group) {
    if (capture != Capture::Nothing) {
        output_.emplace();
    }
    if (capture == Capture::OutputAndErrors) {
        errors_.emplace();
    }
    prepareToWait();
    pid_ = ::fork();
    if (pid_ == 0) {
        if (group_ == Group::Own) {
            ::setpgid(0, 0);
        }
        replace(STDOUT_FILENO, output_);
        replace(STDERR_FILENO, errors_);
        become();
        ::_exit(statusCannotExecute);
    }
    const int error = errno;
    if (pid_ == -1) {
        throw IOException("fork() fail", error);
    }
    if (group_ == Group::Own) {
        ::setpgid(pid_, pid_);  // here as well, so that it holds before anything is killed
    }
    for (std::optional<OutputPipe>* pipe : {&output_, &errors_}) {
        if (*pipe) {
            (*pipe)->closeWriteEnd();
        }
    }
}

Child::~Child() {
    if (!isLeft_ && !status_) {
        kill();
    }
}

bool Child::waitFor(const Deadline& deadline) {
    bool goesOn = true;
    while (true) {
        goesOn =
            !interrupted() && goesOn;  // before the look, since it takes the child's signal too
        collect(WNOHANG);
        if (status_ || !goesOn) {
            return status_.has_value();
        }
        goesOn = waitForOutput(deadline) != 0;
    }
}

void Child::kill() {
    signalGroup();
    ::kill(pid_, SIGKILL);
    collect(0);
}

int Child::exitCode() const {
    if (!status_ || waitError_ != 0) {
        return 0;
    }
    return WIFEXITED(*status_) ? WEXITSTATUS(*status_) : 128 + WTERMSIG(*status_);
}

void Child::signalGroup() const {
    if (group_ == Group::Own) {
        ::kill(-pid_, SIGKILL);
    }
}

const std::string& Child::whole(std::optional<OutputPipe>& pipe, const Deadline& deadline) const {
    try {
        pipe->drainToEnd(deadline);
    } catch (...) {
        signalGroup();
        throw;
    }
    if (!pipe->atEnd()) {
        signalGroup();
    }
    return pipe->text();
}

void Child::collect(int options) {
    int status = noStatus;
    pid_t ended = 0;
    do {
        ended = ::waitpid(pid_, &status, options);
    } while (ended == -1 && errno == EINTR);
    if (ended == -1) {
        waitError_ = errno;
    }
    if (ended != 0) {
        status_ = status;
    }
}

// Waits for output, the end of the child or a signal. Returns 0 when the time is over.
int Child::waitForOutput(const Deadline& deadline) {
    fd_set readable;
    FD_ZERO(&readable);
    int highest = -1;
    for (const std::optional<OutputPipe>* pipe : {&output_, &errors_}) {
        if (*pipe && !(*pipe)->atEnd()) {
            FD_SET((*pipe)->readEnd(), &readable);
            highest = std::max(highest, (*pipe)->readEnd());
        }
    }
    const int ready = waitForSockets(highest + 1, &readable, nullptr, deadline);
    for (std::optional<OutputPipe>* pipe : {&output_, &errors_}) {
        if (ready > 0 && *pipe && !(*pipe)->atEnd() && FD_ISSET((*pipe)->readEnd(), &readable)) {
            (*pipe)->drain();
        }
    }
    return ready;
}

}  // namespace corvane
