// Writing to what may take long, a terminal or a pipe that nobody reads, from where no signal
// handler may run: the log's own code.
#pragma once

#include <string_view>

namespace corvane {

/// Writes all bytes, and waits for as long as that takes unless SIGTERM or SIGINT arrives: then it
/// calls requestStop() and gives up, and the handler runs at the next wait. Once a stop was asked
/// for, only what goes without waiting is written. The descriptor may share its open file with
/// other programs: it is made non-blocking for the time of a write after a stop only. Returns
/// whether all was written. Safe in a signal handler.
bool writeUntilStop(int fd, std::string_view bytes) noexcept;

}  // namespace corvane
