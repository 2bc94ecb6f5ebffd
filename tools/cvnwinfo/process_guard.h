// Protection against the surroundings in which a server may start the tool: closed standard
// descriptors, a closed reader, and a window system that does not answer.
#pragma once

#include <chrono>
#include <string_view>

namespace corvane::wintool {

/// Opens the null device on each of the descriptors 0, 1 and 2 that is closed, so that the
/// connection to the window system never gets one of these numbers. What stands in for a closed
/// standard output refuses to be written to.
void occupyStandardDescriptors();

/// Makes writing to a pipe without reader an error instead of the end of the process.
void ignoreBrokenPipes();

/// Ends the process with status 1 and `message` on standard error when it still runs after
/// `limit`. Every reply of the X server is waited for in libxcb, which knows no time limit, and
/// on macOS several applications may be slow, one after the other.
/// `limit` must be under one hour; `message` is kept and must stay.
void limitRunningTime(std::chrono::milliseconds limit, std::string_view message);

}  // namespace corvane::wintool
