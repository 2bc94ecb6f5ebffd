// What may have been meant by a command that does not exist.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "text/exception.h"

namespace corvane::ctl {

/// The candidate that differs least from this name, upper and lower case aside; empty when none is
/// like it.
std::string_view suggest(std::string_view name, std::span<const std::string_view> candidates);

/// The command, local or the server's, whose name differs least from this one, upper and lower case
/// aside; empty when none is like it.
std::string_view suggestCommand(std::string_view name);

/// "unknown command 'listdir', did you mean listDir?"
Exception unknownCommand(std::string_view name);

}  // namespace corvane::ctl
