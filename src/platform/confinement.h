// Confining the program, and every program that it starts from then on, to some folders. The kernel
// does it, whatever paths and links are used; it cannot be undone. One file per system implements
// it: confinement_linux.cpp with Landlock, and confinement_macos.cpp, which always refuses.
#pragma once

#include <string>
#include <vector>

#include "platform/file_desc.h"

namespace corvane::platform {

/// What is allowed with a file or, for a folder, with all that is below it.
enum class Access {
    Change,  ///< read, write, create, remove and move
    Read,    ///< read files and list directories
    Run,     ///< execute
    Look,    ///< read files, but list no directory
};

struct Grant {
    /// A full path in the file system's character set. Links are followed once, when the
    /// confinement is prepared.
    std::string path;
    Access access;
    /// Whether it is something that the program itself needs, rather than what somebody has asked
    /// for: it is left out where there is no such file.
    bool isOwn = false;
};

class Confinement {
  public:
    /// The version of the kernel's confinement (on Linux Landlock's ABI); 0 for none.
    static int kernelVersion();

    /// Prepares everything, and confines nothing yet. What all programs need to be started (the
    /// loader, the system's libraries, the null device) comes along with Access::Run. An older
    /// `version` than the kernel's leaves out what that did not know. Throws IOException for a path
    /// that cannot be granted, and Exception where the kernel cannot keep what is asked for.
    explicit Confinement(const std::vector<Grant>& grants, int version = kernelVersion());

    /// Confines the program, from now on and for ever. It cannot win rights by executing a program
    /// any more (setuid). Only for a process with one thread. Throws IOException.
    void enforce() const;

  private:
    FileDesc rules_;
};

/// Whether the program has confined itself.
bool isConfined();

}  // namespace corvane::platform
