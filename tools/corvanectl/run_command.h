// Carries out what a command line asks for, here or by the server, and prints what comes of it.
#pragma once

#include <functional>

#include "corvanectl/invocation.h"

namespace corvane::ctl {

/// Returns the exit status. Throws Exception when there is no such command, its parameters are
/// wrong, or no reply comes.
int runCommand(const Invocation& invocation);

/// The same for a command line that may ask for help or the version instead.
int runInvocation(const Invocation& invocation);

/// Runs `work` with the message and the status of a failure instead of its exception.
int reportingFailures(const std::function<int()>& work);

}  // namespace corvane::ctl
