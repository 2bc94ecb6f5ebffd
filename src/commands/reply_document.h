// The text of a reply while it is put together: one growing buffer that is used again for the next
// reply, and large texts that stay where they are.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "commands/corvane_detail.h"
#include "text/byte_buffer.h"

namespace corvane {

class ReplyDocument {
  public:
    /// Starts a new document.
    void clear();

    ReplyDocument& operator<<(std::string_view text) {
        buffer_.append(text);
        return *this;
    }

    /// Appends a Detail element. Nothing is escaped; the detail must stay until the document is
    /// sent, since a large text in it is not copied.
    void append(const CorvaneDetail& detail);

    /// The document in order; valid until the next change.
    std::span<const std::string_view> pieces();

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
