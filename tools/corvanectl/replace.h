// "copy --replace" and "rename --replace": a file in the place of another one, without its tail.
#pragma once

#include "corvanectl/invocation.h"

namespace corvane::ctl {

/// Returns the exit status. The contents are first put beside the target, under a name of their
/// own; only then the target is deleted, and they get its name: whatever fails or ends in between,
/// and whatever other names a file has, the contents of the source are there. Throws Exception for
/// what is refused: directories, a target that is the source, one of which nothing can be known.
int replaceFile(const Invocation& invocation);

}  // namespace corvane::ctl
