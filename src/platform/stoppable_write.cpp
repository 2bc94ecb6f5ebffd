#include "platform/stoppable_write.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

#include "platform/waiting.h"

namespace corvane {
namespace {

constexpr std::array<int, 2> terminations = {SIGTERM, SIGINT};

volatile std::sig_atomic_t target = -1;
std::array<volatile std::sig_atomic_t, terminations.size()> noticed{};

void makeNonBlocking(int fd) { ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK); }

// Ends a write that waits; one that is only about to begin finds a descriptor that does not wait.
void noticeTermination(int sig) {
    const int savedErrno = errno;
    for (std::size_t i = 0; i < terminations.size(); ++i) {
        if (terminations[i] == sig) {
            noticed[i] = 1;
        }
    }
    requestStop();
    makeNonBlocking(target);
    errno = savedErrno;
}

// Lets the termination signals in, and only notices them; in the end they are pending again.
class TerminationsNoticed {
  public:
    explicit TerminationsNoticed(int fd) : fd_(fd), flags_(::fcntl(fd, F_GETFL)) {
        target = fd;
        struct sigaction action {};
        action.sa_handler = noticeTermination;
        sigset_t signals;
        sigemptyset(&signals);
        for (const int sig : terminations) {
            sigaddset(&signals, sig);
        }
        action.sa_mask = signals;
        for (std::size_t i = 0; i < terminations.size(); ++i) {
            noticed[i] = 0;
            ::sigaction(terminations[i], &action, &previousActions_[i]);
        }
        if (stopRequested()) {
            makeNonBlocking(fd_);
        }
        ::sigprocmask(SIG_UNBLOCK, &signals, &previousMask_);
    }
    ~TerminationsNoticed() {
        ::sigprocmask(SIG_SETMASK, &previousMask_, nullptr);
        for (std::size_t i = 0; i < terminations.size(); ++i) {
            ::sigaction(terminations[i], &previousActions_[i], nullptr);
            if (noticed[i] != 0) {
                static_cast<void>(::raise(terminations[i]));
            }
        }
        if (stopRequested()) {
            ::fcntl(fd_, F_SETFL, flags_);
        }
    }
    TerminationsNoticed(const TerminationsNoticed&) = delete;
    TerminationsNoticed& operator=(const TerminationsNoticed&) = delete;
    TerminationsNoticed(TerminationsNoticed&&) = delete;
    TerminationsNoticed& operator=(TerminationsNoticed&&) = delete;

  private:
    int fd_;
    int flags_;
    std::array<struct sigaction, terminations.size()> previousActions_{};
    sigset_t previousMask_{};
};

// Whoever shares the open file may have made it non-blocking. In slices, since a signal may have
// been noticed just before.
void waitForRoom(int fd) {
    constexpr int slice = 50;  // milliseconds
    pollfd wanted{fd, POLLOUT, 0};
    ::poll(&wanted, 1, slice);
}

bool writeWhileAllowed(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || (errno != EINTR && errno != EAGAIN) || stopRequested()) {
            return false;
        } else if (errno == EAGAIN) {
            waitForRoom(fd);
        }
    }
    return true;
}

}  // namespace

bool writeUntilStop(int fd, std::string_view bytes) noexcept {
    if (!signalsAreHeld() && !stopRequested()) {
        return writeWhileAllowed(fd, bytes);  // a termination signal ends the process
    }
    const TerminationsNoticed signals(fd);
    return writeWhileAllowed(fd, bytes);
}

}  // namespace corvane
