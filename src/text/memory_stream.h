// An input stream over bytes that somebody else keeps: a request is read line by line, and its rest
// taken as one block, without a copy of the text.
#pragma once

#include <cstddef>
#include <istream>
#include <streambuf>
#include <string_view>

namespace corvane {

/// The bytes must outlive the buffer.
class MemoryStreamBuf : public std::streambuf {
  public:
    explicit MemoryStreamBuf(std::string_view text) {
        // The get area is never written to; std::streambuf only has no constant form of it.
        char* begin =
            const_cast<char*>(text.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
        setg(begin, begin, begin + text.size());
    }
};

class MemoryStream : private MemoryStreamBuf, public std::istream {
  public:
    explicit MemoryStream(std::string_view text)
        : MemoryStreamBuf(text), std::istream(static_cast<std::streambuf*>(this)) {}
};

}  // namespace corvane
