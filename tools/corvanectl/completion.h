// What may stand at the end of a command line that is being typed, for shells and for the prompt.
#pragma once

#include <string>
#include <vector>

#include "corvanectl/exchange.h"

namespace corvane::ctl {

/// The words that can take the place of the last one of `words`, which are those of a command line
/// without the program's name. For a path of the server it is asked, at the endpoint that the words
/// name or at `endpoint`; a server that does not answer within a second has no paths. Throws
/// nothing but for a lack of memory. Directories end with "/".
std::vector<std::string> completions(std::vector<std::string> words, Endpoint endpoint);

}  // namespace corvane::ctl
