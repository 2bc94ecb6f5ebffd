#include "commands/corvane_server.h"

#include <algorithm>
#include <log4cpp/Category.hh>

#include "server/address.h"
#include "log/log.h"

namespace corvane {

void CorvaneServer::processClientCommand(int sock, const std::string& cmd, std::istream& params) {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.server.process.client.cmd");
    const auto* const command =
        std::find_if(commandTable.begin(), commandTable.end(),
                     [&cmd](const Command& row) { return row.name == cmd; });
    if (command == commandTable.end() || !isAllowed(cmd)) {
        if (log.isWarnEnabled()) {
            log.warn("Client %s: command '%s' not found", formatAddress(sock).c_str(), cmd.c_str());
        }
        sendFatalError(sock, cmd);
        return;
    }
    if (command->effect != Effect::Reads) {
        flushLog();
        expectFreedMemory();  // the names of a large tree, for one
    }
    (this->*command->handler)(sock, cmd, params);
}

void CorvaneServer::sendFatalError(int sock, const std::string& cmd) {
    sendResult(sock, cmd, false, std::nullopt, {}, "");
}

}  // namespace corvane
