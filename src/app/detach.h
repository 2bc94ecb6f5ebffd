// Standard descriptors and detaching from the terminal.
#pragma once

namespace corvane {

/// Opens the null device in place of descriptors 0, 1 and 2 that are closed, so that no file or
/// connection ever gets one of these numbers.
void ensureStandardDescriptors();

/// Goes on in a new session without a terminal, in a grandchild; the calling process ends with
/// status 0. Descriptors 0, 1 and 2 lead to the null device then.
void detachFromTerminal();

}  // namespace corvane
