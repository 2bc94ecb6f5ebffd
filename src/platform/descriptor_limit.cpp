#include "platform/descriptor_limit.h"

#include <sys/resource.h>
#include <sys/select.h>

#include <algorithm>

namespace corvane {
namespace {

rlimit original{};
bool isRaised = false;

}  // namespace

void raiseDescriptorLimit() {
    if (isRaised || ::getrlimit(RLIMIT_NOFILE, &original) != 0) {
        return;
    }
    const rlim_t wanted = std::min<rlim_t>(original.rlim_max, FD_SETSIZE);
    if (original.rlim_cur < wanted) {
        const rlimit raised{wanted, original.rlim_max};
        isRaised = ::setrlimit(RLIMIT_NOFILE, &raised) == 0;
    }
}

void restoreDescriptorLimit() {
    if (isRaised) {
        ::setrlimit(RLIMIT_NOFILE, &original);
    }
}

}  // namespace corvane
