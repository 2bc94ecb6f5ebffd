// The log's last chance: signals that end the process.
#pragma once

namespace corvane {

/// Makes every signal that ends the process by default, SIGKILL apart, write the pending lines
/// before it does so: crashes (SIGSEGV and its like, an overflow of the stack among them) and what
/// others send (SIGHUP, SIGQUIT, SIGUSR1 ...). A signal that is ignored or that somebody else
/// handles, a sanitizer for one, is left alone. The process ends with the same signal as ever.
void flushLogOnFatalSignals();

}  // namespace corvane
