// Limits that make system calls fail on purpose: for the size of files (a full disk that root meets
// too) and for the number of descriptors.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "support/signal_action.h"
#include "support/thrown.h"

namespace corvane::test {

/// Lowers the soft limit of a resource and puts it back in the end.
class ResourceLimit {
  public:
    ResourceLimit(int resource, rlim_t limit) : resource_(resource) {
        ::getrlimit(resource_, &previous_);
        const rlimit lower{limit, previous_.rlim_max};
        if (::setrlimit(resource_, &lower) != 0) {
            throw std::runtime_error("cannot set a resource limit");
        }
    }
    ~ResourceLimit() { ::setrlimit(resource_, &previous_); }
    ResourceLimit(const ResourceLimit&) = delete;
    ResourceLimit& operator=(const ResourceLimit&) = delete;
    ResourceLimit(ResourceLimit&&) = delete;
    ResourceLimit& operator=(ResourceLimit&&) = delete;

  private:
    int resource_;
    rlimit previous_{};
};

/// The number that the next descriptor will have; a test that compares two of them sees a leak.
inline int nextDescriptor() {
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    return next;
}

/// No descriptor with the number `count` or a higher one can be opened. The undefined-behaviour
/// sanitizer needs one itself when it meets a class for the first time, so that the exceptions to
/// come are shown to it before.
class DescriptorLimit {
  public:
    explicit DescriptorLimit(int count) : limit_(RLIMIT_NOFILE, static_cast<rlim_t>(count)) {}

  private:
    static inline const std::string known_ = thrownBy([] { throw IOException("", 0); });
    ResourceLimit limit_;
};

/// No file may grow beyond `bytes`: writing more fails with EFBIG, without a signal.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes)
        : ignored_(SIGXFSZ, SIG_IGN), limit_(RLIMIT_FSIZE, bytes) {}

  private:
    SignalAction ignored_;
    ResourceLimit limit_;
};

}  // namespace corvane::test
