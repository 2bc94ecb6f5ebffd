// "corvanectl help [COMMAND]".
#pragma once

#include "corvanectl/invocation.h"

namespace corvane::ctl::local {

int help(const Invocation& invocation);

}  // namespace corvane::ctl::local
