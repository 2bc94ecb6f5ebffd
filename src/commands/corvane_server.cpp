#include "commands/corvane_server.h"

#include <algorithm>
#include <log4cpp/Category.hh>

#include "commands/command_syntax.h"
#include "log/log.h"

namespace corvane {

static_assert(std::equal(commandTable.begin(), commandTable.end(), commandSyntax.begin(),
                         commandSyntax.end(),
                         [](const Command& row, const CommandSyntax& syntax) {
                             return row.name == syntax.name;
                         }),
              "a command is missing in commandTable or in commandSyntax, or has another place");

void CorvaneServer::processClientCommand(int sock, const std::string& cmd, std::istream& params) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.cmd");
    const Command* const command = findCommand(cmd);
    if (command == nullptr || !isAllowed(cmd)) {
        if (log.isWarnEnabled()) {
            log.warn("Client %s: command '%s' not found", addressOf(sock).c_str(), cmd.c_str());
        }
        sendFatalError(sock, cmd);
        return;
    }
    if (command->work == Work::Heavy) {
        flushLog();
        expectFreedMemory();  // the names of a large tree, for one
    }
    (this->*command->handler)(sock, cmd, params);
}

void CorvaneServer::sendFatalError(int sock, const std::string& cmd) {
    sendResult(sock, cmd, false, std::nullopt, {}, "");
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::optional<int> errnoValue,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    const ReplyDocument::ClearAtEnd cleared(reply_);
    reply_.begin(action, ok, errnoValue, hint);
    for (const CorvaneDetail& detail : details) {
        reply_.append(detail);
    }
    sendTerminated(sock, reply_.finish());
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    sendResult(sock, action, ok, std::nullopt, details, hint);
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok, int errnoValue) {
    sendResult(sock, action, ok, errnoValue, {}, "");
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::string_view hint) {
    sendResult(sock, action, ok, std::nullopt, {}, hint);
}

const Command* findCommand(std::string_view name) {
    const auto* const found = std::find_if(commandTable.begin(), commandTable.end(),
                                           [name](const Command& row) { return row.name == name; });
    return found == commandTable.end() ? nullptr : found;
}

}  // namespace corvane
