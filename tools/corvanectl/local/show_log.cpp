#include "corvanectl/local/show_log.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "corvanectl/display.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/local/log_line.h"
#include "corvanectl/local/log_places.h"
#include "corvanectl/terminal.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl::local {
namespace {

constexpr std::size_t mostAtOnce = std::size_t{1024} * 1024;
constexpr int pause = 200;  // milliseconds

std::string_view colourOf(Level level) {
    return level <= Level::Error    ? "\x1b[31m"
           : level == Level::Warn   ? "\x1b[33m"
           : level == Level::Notice ? "\x1b[36m"
           : level == Level::Debug  ? "\x1b[2m"
                                    : "";
}

// Waits a while for more; false when nobody reads what is written any more.
bool waitForMore() {
    pollfd output{STDOUT_FILENO, 0, 0};
    if (::poll(&output, 1, pause) > 0 && (output.revents & POLLNVAL) != 0) {
        ::poll(nullptr, 0, pause);  // a device that cannot be polled, on macOS
        return true;
    }
    return (output.revents & (POLLERR | POLLHUP)) == 0;
}

std::string pathOfLog(const Invocation& invocation) {
    const LogQuery query = queryForLog(invocation.log, invocation.endpoint.port);
    const std::vector<std::string> found = foundLogs(query);
    if (found.empty()) {
        throw Exception("there is no log " + strImplde(likelyLogs(query), " or ") +
                        ", --log FILE names another");
    }
    return found.front();
}

}  // namespace

std::string shownLines(std::string_view lines, LogFilter& filter, bool onTerminal, bool coloured) {
    std::string shown;
    while (!lines.empty()) {
        const std::string_view line = takeLine(lines);
        if (!filter.shows(line)) {
            continue;
        }
        const std::string_view colour = coloured ? colourOf(filter.level()) : "";
        shown += colour;
        shown += onTerminal ? visible(line) : std::string(line);
        shown += colour.empty() ? "\n" : "\x1b[0m\n";
    }
    return shown;
}

std::string LogFollower::next() {
    const std::optional<LogPosition> end = endOfLog(path_);
    if (!end) {
        return "";  // it is being replaced
    }
    const bool isSame = end->device == read_.device && end->file == read_.file;
    if (isSame && end->offset == read_.offset) {
        return "";
    }
    std::optional<std::string> text = readNext(path_, read_, mostAtOnce);
    if (!text) {
        throw Exception(concatenate("cannot read ", path_, ": ", std::strerror(errno)));
    }
    // Half a line stays for the next time, unless there is no room for the rest of it.
    const std::size_t lineEnd = text->rfind('\n');
    const bool isLong = lineEnd == std::string::npos && text->size() == mostAtOnce;
    const std::size_t whole = isLong ? text->size() : lineEnd + 1;
    read_.offset -= static_cast<off_t>(text->size() - whole);
    text->resize(whole);
    return *text;
}

int log(const Invocation& invocation) {
    const LogView view = LogView::parse(invocation.options).value_or(LogView{});
    LogFilter filter(view);
    LogFollower follower(pathOfLog(invocation));
    const bool onTerminal = isTerminal(STDOUT_FILENO);
    const char* const noColour = std::getenv("NO_COLOR");
    const bool coloured = onTerminal && (noColour == nullptr || *noColour == '\0');
    do {
        for (std::string lines = follower.next(); !lines.empty() && std::cout;
             lines = follower.next()) {
            std::cout << shownLines(lines, filter, onTerminal, coloured) << std::flush;
        }
    } while (view.follow && std::cout && waitForMore());
    return succeeded;
}

}  // namespace corvane::ctl::local
