// The command that opens programs, documents and web addresses.
#include <log4cpp/Category.hh>

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "launch/launcher.h"
#include "fileutil/paths.h"

namespace corvane {

void CorvaneServer::cmdExecute(int sock, const std::string& cmd, std::istream& params) {
    static log4cpp::Category& category =
        log4cpp::Category::getInstance("corvane.server.process.client.cmd.execute");
    const CommandLog log(category, sock, cmd);
    orFailed(
        sock, cmd, "",
        [&] {
            const std::string target =
                getPlatformExecPath(correctPath(removePathParams(getline(params))));
            if (category.isDebugEnabled()) {
                log.debug(": execute app '%s' currdir '%s'", target.c_str(),
                          getCurrentDirectory().c_str());
            }
            shellexecute(target.c_str());
            sendResult(sock, cmd, true, "");
        },
        [&log](const Exception& e) { log.failure(e); });
}

}  // namespace corvane
