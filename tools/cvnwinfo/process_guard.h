// Protection against the surroundings in which a server may start the tool: closed standard
// descriptors, a closed reader, and an X server that does not answer.
#pragma once

#include <chrono>

namespace corvane::wintool {

/// Opens the null device on each of the descriptors 0, 1 and 2 that is closed, so that the
/// connection to the X server never gets one of these numbers. What stands in for a closed
/// standard output refuses to be written to.
void occupyStandardDescriptors();

/// Makes writing to a pipe without reader an error instead of the end of the process.
void ignoreBrokenPipes();

/// Ends the process with status 1 and a message on standard error when it still runs after
/// `limit`. Every reply of the X server is waited for in libxcb, which knows no time limit.
/// `limit` must be under one hour.
void limitRunningTime(std::chrono::milliseconds limit);

}  // namespace corvane::wintool
