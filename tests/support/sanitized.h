// Whether this is a build with AddressSanitizer, which changes what a process needs and keeps.
#pragma once

namespace corvane::test {

constexpr bool isSanitized = CORVANE_SANITIZED;  // set for the build

}  // namespace corvane::test
