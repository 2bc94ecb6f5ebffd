// The files that commands read and write.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <string>

#include "commands/command_log.h"
#include "platform/file_desc.h"

namespace corvane {

/// Closes a file and logs the result, which it returns: 0 or an errno value. A null file is left
/// alone.
int closeFile(FILE* file, const std::string& path, const CommandLog& log);

/// A file of one command; what is still open in the end is closed, whatever happens.
class CommandFile {
  public:
    /// Keeps references to both.
    CommandFile(const std::string& path, const CommandLog& log) : path_(path), log_(log) {}
    ~CommandFile() { close(); }
    CommandFile(const CommandFile&) = delete;
    CommandFile& operator=(const CommandFile&) = delete;
    CommandFile(CommandFile&&) = delete;
    CommandFile& operator=(CommandFile&&) = delete;

    /// Opens a regular file (or a directory, which then cannot be read) as fopen "rb" does. Pipes,
    /// sockets and devices, which might never end, are refused with EINVAL. Returns 0 or an errno
    /// value.
    int openForReading();
    /// Creates or empties a file as fopen "w+" does. Pipes, sockets and block devices are refused
    /// with EINVAL. Returns 0 or an errno value.
    int openForWriting();

    /// Of a file that was opened for reading.
    int descriptor() const { return opened_; }
    /// Of a file that was opened for writing.
    FILE* stream() const { return file_; }
    /// The size in bytes when the file was opened; 0 when it has none.
    std::size_t size() const { return isRegular() ? static_cast<std::size_t>(info_.st_size) : 0; }
    bool isRegular() const { return S_ISREG(info_.st_mode); }

    /// Returns 0 or an errno value.
    int close();

  private:
    int open(int flags, bool (*refused)(mode_t));

    const std::string& path_;
    const CommandLog& log_;
    FileDesc opened_;
    FILE* file_ = nullptr;
    struct stat info_ {};
};

}  // namespace corvane
