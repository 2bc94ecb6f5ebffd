#include "corvanectl/reply.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view replyStart = "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"";
constexpr std::string_view replyEnd = "</Header></CorvaneMsg>";
constexpr std::string_view detailStart = "<Detail id=\"";
constexpr std::string_view detailTextEnd = "</Detail>";

class Reader {
  public:
    explicit Reader(std::string_view rest) : rest_(rest) {}

    bool at(std::string_view text) const { return startsWith(rest_, text); }

    bool skip(std::string_view text) {
        const bool found = at(text);
        rest_.remove_prefix(found ? text.size() : 0);
        return found;
    }

    void require(std::string_view text) { check(skip(text)); }

    void requireEnd() const { check(rest_.empty()); }

    // What stands before `end`, which is skipped as well.
    std::string_view until(std::string_view end) { return take(rest_.find(end), end.size()); }

    // The same for an end that counts only where a detail or the end of the reply follows: a name
    // may hold the same characters.
    std::string_view untilLast(std::string_view end) {
        for (std::size_t from = rest_.find(end); from != std::string_view::npos;
             from = rest_.find(end, from + 1)) {
            const std::string_view next = rest_.substr(from + end.size());
            if (startsWith(next, detailStart) || next == replyEnd) {
                return take(from, end.size());
            }
        }
        return take(std::string_view::npos, 0);
    }

  private:
    static void check(bool isReply) {
        if (!isReply) {
            throw Exception("the answer is not a reply of a Corvane server");
        }
    }

    std::string_view take(std::size_t size, std::size_t endSize) {
        if (size == std::string_view::npos) {
            throw Exception("the reply is not complete");
        }
        const std::string_view taken = rest_.substr(0, size);
        rest_.remove_prefix(size + endSize);
        return taken;
    }

    std::string_view rest_;
};

ReplyDetail readDetail(Reader& reader) {
    ReplyDetail detail;
    reader.require(detailStart);
    detail.id = reader.until("\" extra=\"");
    detail.extra = reader.until("\"");
    if (reader.skip(" date=\"")) {
        detail.date = reader.until("\"");
    }
    if (reader.skip(" size=\"")) {
        detail.size = reader.until("\"");
    }
    detail.isText = reader.skip(">");
    if (detail.isText) {
        detail.value = unescapeXml(reader.until(detailTextEnd));
    } else {
        reader.require(" Value=\"");
        detail.value = reader.untilLast("\" />");
    }
    return detail;
}

int readNumber(std::string_view text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

Reply parseReply(std::string_view text) {
    Reader reader(text);
    Reply reply;
    reader.require(replyStart);
    reader.until("\" Result=\"");
    reply.ok = reader.until("\"") == "SUCCESS";
    if (reader.skip(" errno=\"")) {
        reply.errnoValue = readNumber(reader.until("\""));
    }
    if (reader.skip(" hint=\"")) {
        reply.hint = reader.untilLast("\">");
    } else {
        reader.require(">");
    }
    while (reader.at(detailStart)) {
        reply.details.push_back(readDetail(reader));
    }
    reader.require(replyEnd);
    reader.requireEnd();
    return reply;
}

std::string unescapeXml(std::string_view text) {
    constexpr std::array<std::pair<std::string_view, char>, 5> entities{
        {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        const std::size_t run = std::min(text.find('&'), text.size());
        plain += text.substr(0, run);
        text.remove_prefix(run);
        const auto* const entity =
            std::find_if(entities.begin(), entities.end(),
                         [text](const auto& each) { return startsWith(text, each.first); });
        if (entity != entities.end()) {
            plain += entity->second;
            text.remove_prefix(entity->first.size());
        } else if (!text.empty()) {
            plain += text.front();
            text.remove_prefix(1);
        }
    }
    return plain;
}

}  // namespace corvane::ctl
