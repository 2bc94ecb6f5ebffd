// Path strings and the well-known directories. Inside the program a path is UTF-8 with "/" between
// its components; a directory path ends with "/". Paths are converted to the file system's
// character set only where they are handed to a system call.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace corvane {

inline constexpr char SEPARATOR_DIR = '/';
/// Accepted on input and rewritten to SEPARATOR_DIR.
inline constexpr char SEPARATOR_DIR_INVALID = '\\';
inline constexpr const char* DIR_THIS = ".";
inline constexpr const char* DIR_PARENT = "..";

/// The arguments of the process, stored by main().
extern int ARGC;
extern char** ARGV;
/// The working directory at the start of the process, with a trailing "/".
extern std::string startupDirectory;

/// Adds "/" to a path that is not empty and ends with neither "/" nor "\".
std::string slashPath(std::string path);
/// Removes one "/" or "\" at the end.
std::string unslashPath(const std::string& path);
/// Replaces every "\" by "/".
std::string correctPath(std::string path);
/// slashPath() of correctPath().
std::string correctDirectoryPath(std::string path);
/// Removes every "?" and "*" and logs a warning when there were any.
std::string correctPathInvalidChars(const std::string& path);

/// The st_mode of the file, or 0 when it cannot be examined. One trailing separator is ignored, so
/// that "/" itself counts as not there.
mode_t getFileMode(const std::string& path);
bool isDirectory(const std::string& path);

bool isFullPath(const std::string& path);
/// `path` itself when it is full, else the current directory followed by it.
std::string getFullPath(const std::string& path);
/// All up to and including the last "/"; the whole path when it has none.
std::string getDirectory(const std::string& path);
/// All after the last "/".
std::string getFileName(const std::string& path);
/// The text after the last "." of the last component, without the dot; empty when there is none.
std::string getExtension(const std::string& path);
/// `path` up to its last "?", which is dropped with all after it.
std::string removePathParams(const std::string& path);

/// The working directory as a directory path; empty when it is gone.
std::string getCurrentDirectory();
std::string getStartupDirectory();
/// Remembers the working directory; called once, before any change of it.
void initStartupDirectory();
/// Returns 0, or the error number of chdir(2).
int changeCurrentDirectory(const char* path);

/// The directory for temporary files, with a trailing "/", as the C library chooses it: on Linux
/// TMPDIR when it names a directory, else "/tmp"; on macOS the first that may be written to of
/// "/tmp", "/var/tmp", TMPDIR.
std::string getTempDirectory();
/// The first of HOME, USERPROFILE, TEMP and TMP that is set, as it is; empty when none is.
std::string getUserDirectory();
/// The login name; empty when there is none, as for a service without a terminal.
std::string getUserName();
/// Looks the login name up for all later calls, when the files that tell it are about to go out of
/// reach.
void rememberUserName();
/// The desktop folder without a trailing "/"; empty when there is none.
std::string getUserDesktop();

/// The full path of the program file, from its first argument and the start-up directory. Throws
/// IOException when that leads nowhere, as for a bare name that the shell found through PATH.
std::string getApplicationPath();
/// The directory of the program file, with a trailing "/". Throws as getApplicationPath().
std::string getApplicationDirectory();

/// Wall-clock time in milliseconds; wraps, so it serves for differences only.
std::uint32_t currentTimeMillis();

}  // namespace corvane
