// When the memory that large work leaves behind goes back to the system. Large work is often
// followed by more, as when an application saves several files, and fresh pages cost more than the
// rest of the work: so it is kept, but not for long.
#pragma once

#include "platform/waiting.h"

namespace corvane {

class FreedMemory {
  public:
    /// To be called by work that may leave much freed memory behind.
    void expect() { isExpected_ = true; }
    bool isExpected() const { return isExpected_; }

    /// To be called before each wait: gives the memory back one second after the last work that
    /// expected any. Returns when it has to be called again; none when there is nothing to do.
    Deadline update();

  private:
    bool isExpected_ = false;
    Deadline keptUntil_;
};

}  // namespace corvane
