// Whether two names on the server are those of one file, as far as that can be known from here.
#pragma once

#include <string>

#include "corvanectl/exchange.h"

namespace corvane::ctl {

enum class Sameness { Different, Same, Unknown };

/// For two paths from the root. Where the server seems to be on this machine the system is asked,
/// so that links are found as well; elsewhere only names can be compared.
Sameness compareFiles(const std::string& a, const std::string& b, const Endpoint& server);

}  // namespace corvane::ctl
