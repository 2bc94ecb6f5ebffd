// The files that commands read and write.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "commands/command_log.h"
#include "platform/guarded_open.h"

namespace corvane {

/// Closes a file and logs the result, which it returns: 0 or an errno value. A null file is left
/// alone. A provided interface that the program itself does not call: the files of its commands are
/// descriptors.
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
    /// Creates or empties a file as fopen "w+" does; everyone may read and write a new one, as far
    /// as the umask allows. Pipes, sockets and block devices are refused
    /// with EINVAL. Returns 0 or an errno value.
    int openForWriting();

    int descriptor() const { return file_.fd; }
    /// The size in bytes when the file was opened; 0 when it has none.
    std::size_t size() const {
        return isRegular() ? static_cast<std::size_t>(file_.info.st_size) : 0;
    }
    bool isRegular() const { return S_ISREG(file_.info.st_mode); }

    /// Appends to a file that was opened for writing. A device that takes no more is waited for,
    /// unless the program has to stop; signals are let in between the blocks of a long text.
    /// Returns whether everything was taken.
    bool write(std::string_view bytes);
    /// After the last write(): makes sure that closing a device loses nothing. Returns whether
    /// everything will reach it.
    bool finishWriting();
    /// The number of bytes that write() has taken. After a failure it is that of a stream with a
    /// buffer, which fails when the buffer is full, or at the end: the log has always told that.
    std::size_t written() const { return written_; }

    /// Returns 0 or an errno value.
    int close();

  private:
    int open(int flags, bool (*refused)(mode_t));

    const std::string& path_;
    const CommandLog& log_;
    OpenedFile file_;
    std::size_t written_ = 0;
};

}  // namespace corvane
