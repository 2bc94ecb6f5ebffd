#include "app/signals.h"

#include <signal.h>
#include <sys/wait.h>

#include <cerrno>
#include <log4cpp/Category.hh>

#include "platform/waiting.h"

namespace corvane {
namespace {

void install(int sig, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    // A handler runs to its end before another one starts; a child that only stops is no event.
    action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
    action.sa_mask = heldSignals();
    ::sigaction(sig, &action, nullptr);
}

}  // namespace

Server* server = nullptr;

void term_signal(int sig) {
    const int savedErrno = errno;
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.signal.term");
    requestStop();  // first, since a console that nobody reads would hold the line up
    log.debug("signal %d was received", sig);
    if (server != nullptr) {
        server->deinitServer();
    }
    errno = savedErrno;
}

void chld_signal(int sig) {
    const int savedErrno = errno;
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.signal.chld");
    int status = 0;
    while (::waitpid(-1, &status, WNOHANG) > 0) {
        log.debug("child exited with status %d (sig %d)", status, sig);
    }
    errno = savedErrno;
}

void installSignalHandlers() {
    deliverSignalsOnlyInWaits();
    install(SIGTERM, term_signal);
    install(SIGINT, term_signal);
    install(SIGCHLD, chld_signal);
}

void ignoreSignalsOfWriting() {
    for (const int sig : {SIGPIPE, SIGXFSZ}) {
        static_cast<void>(::signal(sig, SIG_IGN));
    }
}

}  // namespace corvane
