// The owner of one POSIX file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace corvane {

class FileDesc {
  public:
    /// Takes over `fd`; -1 means none.
    explicit FileDesc(int fd = -1) : fd_(fd) {}
    ~FileDesc() { close(); }
    FileDesc(FileDesc&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDesc& operator=(FileDesc&& other) noexcept {
        if (this != &other) {
            close();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }
    FileDesc(const FileDesc&) = delete;
    FileDesc& operator=(const FileDesc&) = delete;

    /// Closes the descriptor and returns the result of close(2), or -1 when there is none.
    int close() { return fd_ == -1 ? -1 : ::close(std::exchange(fd_, -1)); }

    /// Hands the descriptor over to the caller.
    int release() { return std::exchange(fd_, -1); }

    /// Implicit, so that the calls of POSIX take an owner where they take a descriptor.
    operator int() const { return fd_; }  // NOLINT(google-explicit-constructor)

  private:
    int fd_;
};

}  // namespace corvane
