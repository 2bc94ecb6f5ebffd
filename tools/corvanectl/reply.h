// Takes a reply of the server apart. Only element text is escaped in a reply; what stands in
// attributes is there as it is, quotes and "<" included, so this is no general XML reader.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::ctl {

struct ReplyDetail {
    std::string id;
    std::string value;
    std::string extra;
    std::string date;
    std::string size;
    bool isText = false;
};

struct Reply {
    bool ok = false;
    std::optional<int> errnoValue;
    std::string hint;
    std::vector<ReplyDetail> details;
};

/// `text` is the reply without its terminating zero byte. Throws Exception for anything that is no
/// reply of the server.
Reply parseReply(std::string_view text);

/// Replaces the five entities of XML by their characters; leaves any other "&" alone.
std::string unescapeXml(std::string_view text);

}  // namespace corvane::ctl
