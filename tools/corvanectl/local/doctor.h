// "corvanectl doctor": looks at an installed server as a whole.
#pragma once

#include <ostream>
#include <span>
#include <string_view>

#include "corvanectl/invocation.h"
#include "corvanectl/local/finding.h"

namespace corvane::ctl::local {

struct Check {
    std::string_view name;
    Findings (*look)(const Installation& installation);
};

/// In the order in which they are shown.
std::span<const Check> doctorChecks();

/// One line for each finding, and one for a check that has none. Returns whether all is well.
bool report(const Installation& installation, std::span<const Check> checks, std::ostream& out);

/// What is looked at, for the server on this port.
Installation examine(const LogQuery& query);

/// Returns 0 when nothing is wrong, else 1.
int doctor(const Invocation& invocation);

}  // namespace corvane::ctl::local
