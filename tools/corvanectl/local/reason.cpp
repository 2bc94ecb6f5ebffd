#include "corvanectl/local/reason.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>

#include "corvanectl/display.h"
#include "corvanectl/local/log_line.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

// One request at level DEBUG is logged with its data.
constexpr std::size_t longestTail = std::size_t{1024} * 1024;

// What stands behind the common beginning of a line of this client's command; nothing for others.
std::optional<std::string_view> detailOf(std::string_view message, const std::string& client,
                                         const std::string& command) {
    for (const std::string& beginning :
         {concatenate("Client ", client, ": cmd '", command, "'"),
          concatenate("Client ", client, ": command '", command, "'")}) {
        if (const std::size_t at = message.find(beginning); at != std::string_view::npos) {
            return message.substr(at + beginning.size());
        }
    }
    return std::nullopt;
}

constexpr std::string_view notServed = " not found";

// The clean-up after a failure has a line of its own, which tells nothing about the failure.
bool isReason(std::string_view detail) {
    return detail.find("clenup file") == std::string_view::npos &&
           (detail.find("ERROR: '") != std::string_view::npos || startsWith(detail, ": fail (") ||
            detail == notServed);
}

// "directory '/x' ERROR: 'text'" says no more than the text.
std::string plain(std::string_view detail) {
    constexpr std::string_view mark = "ERROR: '";
    if (const std::size_t at = detail.find(mark); at != std::string_view::npos) {
        detail.remove_prefix(at + mark.size());
        // What the window tool says has a line end, behind which is nothing of interest.
        constexpr std::string_view tool = "Program error: <";
        if (startsWith(detail, tool) && detail.find('>') == std::string_view::npos) {
            detail.remove_prefix(tool.size());
        }
        return std::string(detail.substr(0, detail.size() - (endsWith(detail, "'") ? 1 : 0)));
    }
    return detail == notServed ? "the server knows no such command, or is told not to serve it"
                               : trim(detail, ": ");
}

// The number in parentheses at the end of the text, which then loses it; or the one of "fail (N)".
std::optional<int> takeNumber(std::string& text) {
    constexpr std::string_view fail = "fail (";
    const bool isFirst = startsWith(text, fail);
    const std::size_t open = isFirst ? fail.size() - 1 : text.rfind(" (") + 1;
    if (open == 0) {
        return std::nullopt;
    }
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + open + 1, end, number);
    if (error != std::errc() || rest == end || *rest != ')' || number <= 0 ||
        (!isFirst && rest + 1 != end)) {
        return std::nullopt;
    }
    text.erase(isFirst ? text.size() : open - 1);
    return number;
}

std::string joined(const std::vector<std::string>& paths) { return strImplde(paths, " or "); }

}  // namespace

std::optional<std::string> reasonIn(std::string_view lines, const std::string& client,
                                    const std::string& command) {
    std::optional<std::string> named;
    std::optional<std::string> unnamed;
    while (!lines.empty()) {
        const LogLine line = parseLogLine(takeLine(lines));
        if (line.level > Level::Warn && !line.category.empty()) {
            continue;
        }
        const auto detail = detailOf(line.message, client, command);
        if (detail && isReason(*detail)) {
            named = plain(*detail);
        } else if (!detail && line.level == Level::Error && !startsWith(line.message, "Client ") &&
                   endsWith(line.category, ".cmd." + command)) {
            unnamed = std::string(line.message);
        }
    }
    return named ? named : unnamed;
}

std::string inWords(const std::string& reason) {
    std::string text = reason;
    // A tool's own exit status is no error number of the system; nor is 1 for a failed read.
    if (startsWith(text, "Program ") || startsWith(text, "read error on")) {
        return text;
    }
    const std::optional<int> number = takeNumber(text);
    if (!number) {
        return reason;
    }
    if (startsWith(text, "LSOpenCFURLRef error") && endsWith(text, "'")) {
        return format("%s (status %d of the opener)", text.c_str(), *number);
    }
    if (endsWith(text, " error")) {
        text += " " + std::to_string(*number);
    }
    return concatenate(text, " (", std::strerror(*number), ")");
}

FailureLog::FailureLog(LogQuery query) : query_(std::move(query)) {
    for (const std::string& path : likelyLogs(query_)) {
        ends_.emplace_back(path, endOfLog(path));
    }
}

std::string FailureLog::explain(const std::string& client, const std::string& command) const {
    std::vector<std::string> silent;
    const auto look = [&](const std::string& path, const LogPosition& from) {
        const std::optional<std::string> lines = readLog(path, from, longestTail);
        if (lines) {
            silent.push_back(path);
        }
        return lines ? reasonIn(*lines, client, command) : std::nullopt;
    };
    for (const auto& [path, end] : ends_) {
        if (const auto reason = look(path, end.value_or(LogPosition{}))) {
            return visible(inWords(*reason));
        }
    }
    std::vector<std::string> places = likelyLogs(query_);
    for (const std::string& path :
         query_.chosen.empty() ? openLogs(query_.port) : std::vector<std::string>{}) {
        const bool isKnown = std::find(places.begin(), places.end(), path) != places.end();
        if (const auto reason = isKnown ? std::nullopt : look(path, {})) {
            return visible(inWords(*reason));
        }
    }
    if (!silent.empty()) {
        return visible("its log says nothing about it (" + joined(silent) +
                       "); its level may hide it");
    }
    return visible("the server's log tells why; it may be " + joined(places) +
                   ", --log FILE names another");
}

std::string reasonFor(const Invocation& invocation, const FailureLog& log,
                      const std::string& client, bool isFromThisMachine,
                      const std::string& command) {
    if (!isFromThisMachine && invocation.log.empty()) {
        return "the server's log tells why; it is on " + invocation.endpoint.host;
    }
    return log.explain(client, command);
}

}  // namespace corvane::ctl
