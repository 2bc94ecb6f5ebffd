#include "reply/reply_document.h"

#include <string>

namespace corvane {
namespace {

// A text of at least this size is sent from where it is instead of being copied into the buffer.
constexpr std::size_t largeText = std::size_t{32} * 1024;
// A buffer that has grown beyond this is given back after the reply.
constexpr std::size_t keptBuffer = std::size_t{256} * 1024;

}  // namespace

void ReplyDocument::begin(std::string_view action, bool ok, std::optional<int> errnoValue,
                          std::string_view hint) {
    const std::string_view result = ok ? "SUCCESS" : "FAILED";
    clear();
    write("<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"", action, "\" Result=\"",
          result, "\"");
    if (errnoValue) {
        write(" errno=\"", std::to_string(*errnoValue), "\"");
    }
    if (!hint.empty()) {
        write(" hint=\"", hint, "\"");
    }
    write(">");
}

void ReplyDocument::append(const CorvaneDetail& detail) {
    write("<Detail id=\"", detail.id, "\" extra=\"", detail.extra, "\"");
    if (!detail.date.empty()) {
        write(" date=\"", detail.date, "\"");
    }
    if (!detail.size.empty()) {
        write(" size=\"", detail.size, "\"");
    }
    if (detail.isText) {
        write(">");
        appendText(detail.value);
        write("</Detail>");
    } else {
        write(" Value=\"", detail.value, "\" />");
    }
}

void ReplyDocument::appendText(std::string_view text) {
    if (text.size() < largeText) {
        buffer_.append(text);
    } else {
        large_.push_back({buffer_.size(), text});
    }
}

std::span<std::string_view> ReplyDocument::finish() {
    write("</Header></CorvaneMsg>", std::string_view("\0", 1));
    pieces_.clear();
    std::size_t from = 0;
    for (const LargeText& large : large_) {
        pieces_.push_back(buffer_.view().substr(from, large.position - from));
        pieces_.push_back(large.text);
        from = large.position;
    }
    pieces_.push_back(buffer_.view().substr(from));
    return pieces_;
}

void ReplyDocument::clear() {
    buffer_.clearAndShrink(keptBuffer);
    large_.clear();
    pieces_.clear();
}

}  // namespace corvane
