#include "corvanectl/output.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "text/strings.h"

namespace corvane::ctl {
namespace {

bool isEntry(const ReplyDetail& detail) {
    constexpr std::array<std::string_view, 5> kinds{"file", "directory", "share", "server",
                                                    "domain"};
    return std::find(kinds.begin(), kinds.end(), detail.id) != kinds.end();
}

// A stream that fails while it writes has an error mark of 1 and no error number, so that 1 hardly
// ever is the system's "Operation not permitted".
const char* meaning(int errnoValue) {
    return errnoValue == 1 ? "the data could not be written" : std::strerror(errnoValue);
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

std::string describeFailure(const std::string& command, const Reply& reply,
                            const std::string& why) {
    std::string text = command + ": FAILED";
    if (reply.errnoValue) {
        text += ", error " + std::to_string(*reply.errnoValue) + " (" + meaning(*reply.errnoValue) +
                ")";
    }
    if (!reply.hint.empty()) {
        text += ", " + reply.hint;
    }
    return concatenate(text, "; ", why);
}

}  // namespace corvane::ctl
