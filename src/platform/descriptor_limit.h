// How many descriptors the server may have: macOS starts programs with a soft limit of 256, the
// sets of select(2) take four times as many.
#pragma once

namespace corvane {

/// Raises the soft limit to FD_SETSIZE, or to the hard limit where that is lower. A limit that is
/// higher is left alone.
void raiseDescriptorLimit();

/// Gives a child that is about to exec the limit from before: programs that are still written for
/// select(2) count on it. Safe between fork and exec.
void restoreDescriptorLimit();

}  // namespace corvane
