#include "corvanectl/standard_output.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <string_view>

#include "platform/io.h"

namespace corvane::ctl {

StandardOutput::StandardOutput() : before_(std::cout.rdbuf(this)) {
    setp(room_.data(), room_.data() + room_.size());
}

StandardOutput::~StandardOutput() { std::cout.rdbuf(before_); }

bool StandardOutput::hasNoReader() const { return error_ == EPIPE; }

StandardOutput::int_type StandardOutput::overflow(int_type c) {
    if (sync() != 0) {
        return traits_type::eof();
    }
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : sputc(traits_type::to_char_type(c));
}

// What does not fit goes out at once, in one piece however long it is.
std::streamsize StandardOutput::xsputn(const char* text, std::streamsize size) {
    if (size < epptr() - pptr()) {
        return std::streambuf::xsputn(text, size);
    }
    if (sync() != 0) {
        return 0;
    }
    if (!writeAll(STDOUT_FILENO, {text, static_cast<std::size_t>(size)})) {
        error_ = errno;
        return 0;
    }
    return size;
}

int StandardOutput::sync() {
    const std::string_view pending(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    setp(room_.data(), room_.data() + room_.size());
    if (error_ == 0 && !writeAll(STDOUT_FILENO, pending)) {
        error_ = errno;
    }
    return error_ == 0 ? 0 : -1;
}

}  // namespace corvane::ctl
