// Opening programs, documents and web addresses the way a double click would.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace corvane {

/// The platform mark in configuration keys.
inline constexpr const char* OS_MARK = "mac";

/// The counterpart of a Windows program name: "setup.exe" becomes "setup_mac". Other names, also
/// with another spelling of the extension, stay as they are.
std::string getPlatformExecPath(const std::string& path);

/// Opens `target`: a text with ".swf" in it through a generated page, one with ":/" in it as a web
/// address, one with an extension as a document, anything else as a program. Returns 0: the -1 for
/// a program with process id 0 is kept, but no parent ever sees that id, and a failed fork is not
/// told. Throws Exception or IOException when a web address cannot be opened.
int shellexecute(const char* target);

/// Starts a program, searched in PATH when `path` has no "/", with no open descriptors. At most 255
/// arguments are passed. Returns its process id, or -1; it is not waited for.
pid_t createProcess(const std::string& path, const std::vector<std::string>& args = {});

// A provided interface that the program itself does not call, like what it calls.

/// The configured application for a file extension (without dot): the key "app.EXT.mac", else
/// "app.EXT"; empty when there is none.
std::string getAppForExtension(const std::string& extension);

/// Returns its argument; the place to turn an application's name into a path.
std::string resolveApp(const std::string& app);

}  // namespace corvane
