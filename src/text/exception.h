// The root of the program's exception tree. Every failure that the program reports is one of
// these classes, thrown by value and caught by reference; the socket exceptions are in
// server/socket_exception.h.
#pragma once

#include <exception>
#include <string>

namespace corvane {

/// Any failure of the program; what() is the message text.
class Exception : public std::exception {
  public:
    explicit Exception(std::string message);
    const char* what() const noexcept override { return message.c_str(); }

    std::string message;
};

/// A failed system call. The message ends with the code in parentheses: "text (13)".
class IOException : public Exception {
  public:
    /// `code` is an errno value, or 0 when there is none.
    IOException(const std::string& text, int code);

    /// Returns `text` + " (" + `code` + ")".
    static std::string iomsg(const std::string& text, int code);

    int code;
};

/// A file that cannot be opened for reading.
class FileNotFoundException : public Exception {
  public:
    explicit FileNotFoundException(const std::string& path);

    std::string path;
};

/// A request to stop the program; nothing raises it at present.
class ShutdownException : public Exception {
  public:
    using Exception::Exception;
};

/// A setting that the program cannot work with, such as an unknown log priority.
class ConfigureFailure : public Exception {
  public:
    using Exception::Exception;
};

}  // namespace corvane
