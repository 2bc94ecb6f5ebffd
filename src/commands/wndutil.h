// Windows and the screen, through the window tool: a separate program beside the server's own
// executable, which is run for each request and prints comma-separated numbers.
#pragma once

#include <string>

#include "platform/waiting.h"

namespace corvane::wndutil {

/// The file name of the window tool.
inline constexpr const char* PROG_INFO = "cvnwinfo";

/// The titles of the player's window.
inline constexpr const char* PLAYER_TITLE = "Macromedia Flash Player";
inline constexpr const char* OTHER_PLAYER_TITLE = "Adobe Flash Player";

/// Bits of the flags of setWndPos().
inline constexpr int SET_POSITION = 1;
inline constexpr int SET_SIZE = 2;

/// Seconds that a run of the tool may take; 0, the default, for any time. A tool that takes longer
/// is killed, and then counts as ended in an unusual way.
void setToolTimeout(int seconds);

/// Runs a program with an argument vector (element 0 is its path, the last one null) and returns
/// what it wrote on standard output. Throws IOException when it cannot be run or ends with a status
/// other than 0 (its code then), Exception when it was killed; the message holds what it wrote on
/// standard error.
std::string execute(const char* path, char* const* argv);

/// The command line as the log shows it.
std::string makeCmd(const char* path, char* const* argv);

/// Everything readable from `fd` until its end, or until the deadline or a request to stop the
/// program. Throws IOException "reading pipe fail".
std::string readstring(int fd, const Deadline& deadline = {});

/// The comma-separated integer after the next "," from `cursor`, which moves just behind the comma;
/// -1 when no number stands there. Throws Exception when there is no comma.
int nextInt(const char*& cursor);

/// The rectangle of the window with this title, in screen pixels. Throws what execute() and
/// nextInt() throw; so do the others.
void getWndRect(const char* name, int& x, int& y, int& width, int& height);

/// The screen's rectangle; x and y are always 0.
void getScreenRect(int& x, int& y, int& width, int& height);

/// Moves the window when SET_POSITION is among the flags, and resizes it when SET_SIZE is.
void setWndPos(const char* name, int flags, int x, int y, int width, int height);

/// Always throws Exception: there is no way to do it on this system.
void bringToFront(const char* name);

}  // namespace corvane::wndutil
