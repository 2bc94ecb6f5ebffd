// The text of a reply, one line of XML whose exact bytes applications depend on, while it is put
// together: one growing buffer that is used again for the next reply, and large texts that stay
// where they are. Nothing is escaped here: what may hold markup must come escaped.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "reply/corvane_detail.h"
#include "text/byte_buffer.h"

namespace corvane {

class ReplyDocument {
  public:
    /// Starts a new document with its header. The errno attribute is written when there is a value,
    /// the hint when it is not empty.
    void begin(std::string_view action, bool ok, std::optional<int> errnoValue,
               std::string_view hint);

    /// Appends a Detail element. The detail must stay until the document is sent, since a large
    /// text in it is not copied.
    void append(const CorvaneDetail& detail);

    /// Ends the document, and with it a zero byte. Returns its pieces in order, valid until
    /// clear() or begin().
    std::span<std::string_view> finish();

    /// Empties the document and gives the memory of a large one back.
    void clear();

    /// Does it at the end of a scope, however that is left.
    class ClearAtEnd {
      public:
        explicit ClearAtEnd(ReplyDocument& document) : document_(document) {}
        ~ClearAtEnd() { document_.clear(); }
        ClearAtEnd(const ClearAtEnd&) = delete;
        ClearAtEnd& operator=(const ClearAtEnd&) = delete;
        ClearAtEnd(ClearAtEnd&&) = delete;
        ClearAtEnd& operator=(ClearAtEnd&&) = delete;

      private:
        ReplyDocument& document_;
    };

  private:
    /// Appends texts as they are.
    template <typename... Text>
    void write(const Text&... text) {
        char* const begin = buffer_.room((std::string_view(text).size() + ...));
        char* end = begin;
        ((end = std::copy_n(std::string_view(text).data(), std::string_view(text).size(), end)),
         ...);
        buffer_.commit(static_cast<std::size_t>(end - begin));
    }

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
