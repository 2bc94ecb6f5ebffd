// The command that opens programs, documents and web addresses.
#include <log4cpp/Priority.hh>

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "fileutil/paths.h"
#include "launch/launcher.h"
#include "log/log.h"

namespace corvane {

void CorvaneServer::cmdExecute(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    orFailed(sock, cmd, [&] {
        const std::string target =
            getPlatformExecPath(correctPath(removePathParams(getline(params))));
        if (isLogged(log4cpp::Priority::DEBUG)) {
            log.debug(": execute app '%s' currdir '%s'", target.c_str(),
                      getCurrentDirectory().c_str());
        }
        flushLog();  // nobody knows how long a program takes to start, or what it does
        shellexecute(target.c_str());
        reportingLoss([&] { sendResult(sock, cmd, true, ""); },
                      [&log](const Exception& e) { log.failure(e); });
    });
}

}  // namespace corvane
