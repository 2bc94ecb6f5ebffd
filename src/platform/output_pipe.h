// One output of a child, collected through a pipe while the child runs.
#pragma once

#include <cstddef>
#include <string>

#include "platform/file_desc.h"
#include "platform/waiting.h"

namespace corvane {

/// What may be collected of one output, in bytes: as much as a pipe holds.
inline constexpr std::size_t mostOutput = std::size_t{64} * 1024;

/// Appends to `text` what can be read from `fd` without waiting; returns whether that was the end.
/// Throws IOException "reading pipe fail".
bool readAvailable(int fd, std::string& text);

class OutputPipe {
  public:
    /// Neither end is ever 0, 1 or 2, which the child replaces. Throws IOException "pipe() fail".
    OutputPipe();

    int readEnd() const { return readEnd_; }
    int writeEnd() const { return writeEnd_; }
    bool atEnd() const { return readEnd_ == -1; }
    void closeWriteEnd() { writeEnd_.close(); }

    /// Takes what is there without waiting for more. Throws IOException "reading pipe fail", and
    /// Exception when more than mostOutput bytes have come.
    void drain();
    /// Takes all that comes until the end, the deadline or a request to stop the program.
    void drainToEnd(const Deadline& deadline);

    const std::string& text() const { return text_; }

  private:
    FileDesc readEnd_;
    FileDesc writeEnd_;
    std::string text_;
};

}  // namespace corvane
