// The signals that the server handles: termination, which stops it in an orderly way, and the end
// of children. The handlers log and close sockets directly; that is safe because the signals are
// blocked everywhere but in the server's waits (platform/waiting.h).
#pragma once

#include "server/server.h"

namespace corvane {

/// The running server, for the termination handler; null while there is none.
extern Server* server;

/// Handler for SIGTERM and SIGINT: closes the server's sockets, so that its loop ends.
void term_signal(int sig);
/// Handler for SIGCHLD: collects every child that has ended, one log line each.
void chld_signal(int sig);

/// Installs the handlers.
void installSignalHandlers();

/// Ignores the signals that would end the process where an error code does as well: SIGPIPE and
/// SIGXFSZ. To be called before anything is written.
void ignoreSignalsOfWriting();

}  // namespace corvane
