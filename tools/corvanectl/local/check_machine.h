// The doctor's checks of what surrounds the server: its port, its tools, its log and its start.
#pragma once

#include "corvanectl/local/finding.h"

namespace corvane::ctl::checks {

Findings server(const Installation& installation);
/// Who else has the port.
Findings port(const Installation& installation);
/// Runs the window tool, so that it says itself what it lacks.
Findings windowTool(const Installation& installation);
Findings opener(const Installation& installation);
/// Room for the log, and a directory that it can be made in.
Findings log(const Installation& installation);
/// Whether more than one thing starts the server when a user logs in.
Findings starts(const Installation& installation);

}  // namespace corvane::ctl::checks
