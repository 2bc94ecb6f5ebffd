#include "corvanectl/output.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace corvane::ctl {
namespace {

bool isEntry(const ReplyDetail& detail) {
    constexpr std::array<std::string_view, 5> kinds{"file", "directory", "share", "server",
                                                    "domain"};
    return std::find(kinds.begin(), kinds.end(), detail.id) != kinds.end();
}

}  // namespace

void printDetails(const Reply& reply, std::ostream& out) {
    for (const ReplyDetail& detail : reply.details) {
        if (detail.isText) {
            out << detail.value;
        } else if (isEntry(detail) || reply.details.size() == 1) {
            out << detail.value << '\n';
        } else {
            out << detail.id << '=' << detail.value << '\n';
        }
    }
}

std::string describeFailure(const std::string& command, const Reply& reply) {
    std::string text = command + ": FAILED";
    if (reply.errnoValue) {
        text += ", error " + std::to_string(*reply.errnoValue) + " (" +
                std::strerror(*reply.errnoValue) + ")";
    }
    if (!reply.hint.empty()) {
        text += ", " + reply.hint;
    }
    return text + "; the server's log tells why";
}

}  // namespace corvane::ctl
