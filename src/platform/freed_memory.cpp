#include "platform/freed_memory.h"

#include <utility>

#include "platform/system.h"

namespace corvane {

Deadline FreedMemory::update() {
    constexpr int secondsKept = 1;
    if (std::exchange(isExpected_, false)) {
        keptUntil_ = deadlineAfter(secondsKept);
    } else if (hasPassed(keptUntil_)) {
        platform::returnFreedMemory();
        keptUntil_.reset();
    }
    return keptUntil_;
}

}  // namespace corvane
