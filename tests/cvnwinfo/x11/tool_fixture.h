// Runs the window tool in a session of its own and reads what it prints.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/x11_session.h"
#include "support/x11_window.h"

namespace corvane::x11test {

/// Runs the tool with `arguments`.
Outcome runTool(const Environment& environment, const std::vector<std::string>& arguments);

/// What "-g" prints for the window with `title`. Throws std::runtime_error with the tool's message
/// when it fails.
PixelRectangle reportedRectangle(const X11Session& session, const std::string& title);

/// The sessions of a test that runs once under openbox and once without a window manager.
inline const auto bothSessions =
    testing::Values(X11Session::Manager::openbox, X11Session::Manager::none);

void PrintTo(X11Session::Manager manager, std::ostream* out);

}  // namespace corvane::x11test
