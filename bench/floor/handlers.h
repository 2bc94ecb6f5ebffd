// What the floor servers do with a request: the work that no implementation of the command can
// avoid, and nothing else (no logging, no checks, no parsing beyond the lines that are needed).
#pragma once

#include <string>

#include "bench/floor/server.h"

namespace corvane::bench {

/// Sends the same bytes whatever the request.
Handler fixedReply(std::string reply);

/// "write", a path line, the data: one write to a new file.
Handler writeFile();

/// "readText" and a path line: the file in 64 KiB blocks, scanned for the five markup characters
/// (none may occur), and one gathered send.
Handler readFile();

/// "listDir" and a path line: readdir, faccessat for each file, sort by keys computed once, one
/// reply string. Names must be ASCII without an underscore, which keeps the sort key simple.
Handler listDirectory();

/// "execute" and a path line: fork, close_range and execv; the reply follows the fork at once.
Handler launchByFork();

/// The same through posix_spawn, which returns only when the program has been loaded.
Handler launchBySpawn();

/// The line behind the command name.
std::string_view parameter(std::string_view request);

/// The reply of a command that succeeded without details, terminator included.
std::string plainSuccess(std::string_view action);

}  // namespace corvane::bench
