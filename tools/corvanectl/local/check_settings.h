// The doctor's checks of the configuration file: each looks at one kind of mistake and returns
// nothing, or one finding for each mistake.
#pragma once

#include "corvanectl/local/finding.h"

namespace corvane::ctl::checks {

Findings configurationFile(const Installation& installation);
/// Lines that are none, keys that the server does not know, blanks beside "=".
Findings keys(const Installation& installation);
/// Values that count as not set, as something else than they seem to, or are refused.
Findings values(const Installation& installation);
/// Folders and directories that are not there.
Findings folders(const Installation& installation);

}  // namespace corvane::ctl::checks
