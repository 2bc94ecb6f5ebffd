// A lease on a file, as a file server holds it for a client that keeps the file in its cache: who
// opens the file meanwhile has to wait until the lease is given back. Linux only.
#pragma once

#include <fcntl.h>

#include <cerrno>
#include <csignal>
#include <string>

#include "platform/file_desc.h"
#include "support/signal_action.h"

namespace corvane::test {

/// One at a time. It is given back as soon as anybody, also this process, tries to open the file.
class Lease {
  public:
    explicit Lease(const std::string& path)
        : file_(::open(path.c_str(), O_RDWR | O_CLOEXEC)), onRequest_(SIGIO, giveBack) {
        requested = 0;
        leased = file_;
        given_ = ::fcntl(file_, F_SETLEASE, F_WRLCK) == 0;
    }

    /// False where the file system has no leases.
    bool isGiven() const { return given_; }
    /// Whether somebody had to wait.
    bool wasRequested() const { return requested != 0; }

  private:
    static void giveBack(int /*signal*/) {
        const int error = errno;
        requested = 1;
        ::fcntl(leased, F_SETLEASE, F_UNLCK);
        errno = error;
    }

    static inline volatile std::sig_atomic_t requested = 0;
    static inline volatile std::sig_atomic_t leased = -1;

    FileDesc file_;
    SignalAction onRequest_;
    bool given_ = false;
};

}  // namespace corvane::test
