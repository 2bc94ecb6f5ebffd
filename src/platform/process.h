// Starting other programs: what a child has to put in order between fork and exec, so that it
// inherits nothing of the server's.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace corvane {

/// What a started program finds at descriptors 0, 1 and 2; all others are closed.
enum class StandardStreams {
    Closed,
    NullDevice,
    /// The output as it is, the others the null device.
    OutputOnly,
};

/// Closes every descriptor from `first` up to the size of the descriptor table.
void closeAll(int first);

/// Gives a child that is about to exec an empty signal mask and default signal dispositions.
void resetSignals();

/// Replaces this process by the program `arguments[0]`, searched in PATH when it has no "/"
/// (execvp), with at most 255 further arguments. When it cannot be executed, the process ends with
/// status 255. For a child only.
[[noreturn]] void becomeProgram(const std::vector<std::string>& arguments, StandardStreams streams);

/// Starts a program as becomeProgram() does, without waiting for it. Returns the child's process
/// id, or -1 when fork failed. A program that cannot be executed ends as a child with status 255.
pid_t startProgram(const std::vector<std::string>& arguments, StandardStreams streams);

}  // namespace corvane
