// The prompt of "corvanectl" without a command on a terminal.
#pragma once

#include "corvanectl/invocation.h"

namespace corvane::ctl {

/// Reads commands and carries them out until "exit" or the end of input; `options` count for all
/// of them. Returns the exit status of the last one.
int runPrompt(const Invocation& options);

}  // namespace corvane::ctl
