// Which process the rules hold in, and what it finds at its start.
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "platform/darwin_rules/rules.h"

namespace darwin_rules {
namespace {

// The soft limit that launchd and a login shell set.
constexpr rlim_t usualDescriptors = 256;

bool startHere() {
    if (std::string_view(program_invocation_short_name) != "corvane") {
        return false;
    }
    ::unsetenv("LD_PRELOAD");  // the programs that it starts are the system's
    rlimit descriptors{};
    ::getrlimit(RLIMIT_NOFILE, &descriptors);
    descriptors.rlim_cur = std::min(descriptors.rlim_cur, usualDescriptors);
    ::setrlimit(RLIMIT_NOFILE, &descriptors);
    return true;
}

const bool started = startHere();

}  // namespace

bool hold() { return started; }

}  // namespace darwin_rules
