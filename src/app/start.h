// The whole life of the process: configuration, logging, detaching, signals, serving, stopping.
#pragma once

#include <memory>
#include <string>

#include "server/server.h"

namespace corvane {

/// Runs the server until it ends and returns 0. `name` begins the names of the log file and of the
/// instance guard. A failure before it serves is printed and ends the process with status 255 (254
/// for an exception without a message); a failure while serving is logged, and the return value is
/// 0 all the same.
int corvaneStart(std::unique_ptr<Server> newServer, const std::string& name);

/// Prints a title and a text, each on a line of its own, on standard output.
void showMessage(const std::string& title, const std::string& text);

}  // namespace corvane
