// The system has nothing that a program could confine itself to folders with: sandbox_init(3) is
// deprecated, and the language of its profiles is not documented.
#include "platform/confinement.h"
#include "text/exception.h"

namespace corvane::platform {

int Confinement::kernelVersion() { return 0; }

Confinement::Confinement(const std::vector<Grant>& /*grants*/, int /*version*/) {
    throw Exception("this system cannot confine a program to folders");
}

void Confinement::enforce() const { static_cast<void>(rules_); }

bool isConfined() { return false; }

}  // namespace corvane::platform
