// Opening files that a client or the configuration names: whatever they turn out to be, opening
// them must neither hold the program nor end it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

#include "platform/file_desc.h"

namespace corvane {

/// An open file and what it is.
struct OpenedFile {
    FileDesc fd;
    struct stat info {};
};

/// Opens `name` as openat(2) does, with guardedOpen added to `flags`, and examines it. Pipes and
/// devices are not waited for. A regular file that another program holds a lease on (a file server
/// for one of its clients) is: the system asks for the lease and takes it back after a while (45
/// seconds on Linux unless set otherwise). Signals are let in meanwhile, and a request to stop ends
/// the waiting with EINTR. On failure `fd` is -1 and errno is set.
///
/// O_NONBLOCK stays set: reading and writing a device has to expect EAGAIN.
OpenedFile openGuarded(int directory, const std::string& name, int flags, mode_t mode = 0);

}  // namespace corvane
