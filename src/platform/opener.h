// Opens web addresses and documents with the desktop's own applications, as a double click would:
// through Launch Services on macOS, through the desktop's opener program on Linux. One file per
// system implements it: opener_linux.cpp and opener_macos.cpp.
#pragma once

#include <string>

namespace corvane::platform {

/// The path of the program that opens them; empty when there is none. For `ownDirectory` see below.
std::string openerProgram(const std::string& ownDirectory);

/// What became of an address.
struct Opening {
    enum class Result {
        Opened,
        NotAnAddress,
        NoOpener,  ///< nothing is installed that could open it
        Failed,    ///< with a status
    };
    Result result;
    int status = 0;
};

/// Opens a web address and waits until that is done, or has lasted so long that it will not fail
/// any more. `ownDirectory`, with a "/" at its end, holds the program's own tools; when it is
/// empty, they are searched in PATH. A status is the one of the opener: an exit status, 128 + the
/// signal that killed it, 255 when it cannot be executed; on macOS the status of Launch Services.
Opening openAddress(const std::string& address, const std::string& ownDirectory);

/// Opens a document or bundle with its default application, without waiting. Returns false when
/// nothing is installed that could open it.
bool openDocument(const std::string& path, const std::string& ownDirectory);

}  // namespace corvane::platform
