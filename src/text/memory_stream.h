// An input stream over bytes that somebody else keeps: a request is read line by line, and its rest
// taken as one block, without a copy of the text.
#pragma once

#include <cstddef>
#include <istream>
#include <streambuf>
#include <string_view>

namespace corvane {

class MemoryStreamBuf : public std::streambuf {
  public:
    /// The bytes must stay until the buffer is read no more.
    void show(std::string_view text) {
        // The get area is never written to; std::streambuf only has no constant form of it.
        char* begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }

    /// Takes what has not been read yet off the buffer, in one piece that stays as long as the
    /// bytes that were shown.
    std::string_view takeRest() {
        const std::string_view rest(gptr(), static_cast<std::size_t>(egptr() - gptr()));
        setg(egptr(), egptr(), egptr());
        return rest;
    }
};

/// Making a stream costs more than reading a short request from it: one stream serves many texts.
class MemoryStream : private MemoryStreamBuf, public std::istream {
  public:
    explicit MemoryStream(std::string_view text = {})
        : std::istream(static_cast<std::streambuf*>(this)) {
        open(text);
    }

    using MemoryStreamBuf::takeRest;

    /// Starts again with another text, which must stay until it has been read.
    void open(std::string_view text) {
        show(text);
        if (!good()) {  // many requests have no lines to read, and clear() is no inline function
            clear();
        }
    }
};

}  // namespace corvane
