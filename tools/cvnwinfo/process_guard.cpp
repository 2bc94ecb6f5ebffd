#include "cvnwinfo/process_guard.h"

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <string_view>

namespace corvane::wintool {

namespace {

std::string_view lateMessage;

extern "C" void endLateProcess(int /*signal*/) {
    const ssize_t written = write(STDERR_FILENO, lateMessage.data(), lateMessage.size());
    static_cast<void>(written);
    _exit(1);
}

}  // namespace

void occupyStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            // The lowest free number is the one that was found closed.
            const int opened = open("/dev/null", O_RDONLY);
            static_cast<void>(opened);
        }
    }
}

void ignoreBrokenPipes() {
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
}

void limitRunningTime(std::chrono::milliseconds limit, std::string_view message) {
    lateMessage = message;
    struct sigaction action = {};
    action.sa_handler = endLateProcess;
    sigaction(SIGALRM, &action, nullptr);

    sigset_t alarmOnly;
    sigemptyset(&alarmOnly);
    sigaddset(&alarmOnly, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarmOnly, nullptr);

    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
    const std::chrono::microseconds rest = limit - seconds;
    itimerval timer = {};
    timer.it_value.tv_sec = seconds.count();
    timer.it_value.tv_usec = static_cast<suseconds_t>(rest.count());
    setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace corvane::wintool
