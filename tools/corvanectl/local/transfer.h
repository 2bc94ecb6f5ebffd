// "put" and "get": whole files between this machine and the server.
#pragma once

#include "corvanectl/invocation.h"

namespace corvane::ctl::local {

/// "put LOCAL [REMOTE]", by one "write". Refuses, before anything is sent, a file with bytes that
/// "write" cannot carry, 0x00 and 0x01.
int put(const Invocation& invocation);

/// "get [--bytes] [--force] REMOTE [LOCAL]", by one "readText", and with --bytes by as many
/// "readByte" as the file has bytes where "readText" has left bytes out. The local file is there as
/// a whole or not at all.
int get(const Invocation& invocation);

}  // namespace corvane::ctl::local
