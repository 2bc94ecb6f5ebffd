// The text of a reply while it is put together: one growing buffer that is used again for the next
// reply, and large texts that stay where they are.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "reply/corvane_detail.h"
#include "text/byte_buffer.h"

namespace corvane {

class ReplyDocument {
  public:
    /// Starts a new document.
    void clear();

    /// Appends texts as they are.
    template <typename... Text>
    void write(const Text&... text) {
        char* const begin = buffer_.room((std::string_view(text).size() + ...));
        char* end = begin;
        ((end = std::copy_n(std::string_view(text).data(), std::string_view(text).size(), end)),
         ...);
        buffer_.commit(static_cast<std::size_t>(end - begin));
    }

    /// Appends a Detail element. Nothing is escaped; the detail must stay until the document is
    /// sent, since a large text in it is not copied.
    void append(const CorvaneDetail& detail);

    /// Ends the document with a zero byte. Returns its pieces in order, valid until clear().
    std::span<std::string_view> finish();

  private:
    struct LargeText {
        std::size_t position;
        std::string_view text;
    };

    void appendText(std::string_view text);

    ByteBuffer buffer_;
    std::vector<LargeText> large_;
    std::vector<std::string_view> pieces_;
};

}  // namespace corvane
