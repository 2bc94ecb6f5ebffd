#include "commands/command_log.h"

#include "server/address.h"
#include "text/strings.h"

namespace corvane {

void CommandLog::debug(const char* detail, ...) const {
    va_list args;
    va_start(args, detail);
    write(log4cpp::Priority::DEBUG, detail, args);
    va_end(args);
}

void CommandLog::warn(const char* detail, ...) const {
    va_list args;
    va_start(args, detail);
    write(log4cpp::Priority::WARN, detail, args);
    va_end(args);
}

void CommandLog::error(const char* detail, ...) const {
    va_list args;
    va_start(args, detail);
    write(log4cpp::Priority::ERROR, detail, args);
    va_end(args);
}

void CommandLog::write(log4cpp::Priority::Value priority, const char* detail, va_list args) const {
    if (isLogged(priority)) {
        category_.log(priority, concatenate("Client ", formatAddress(sock_), ": cmd '", cmd_, "'",
                                            formatvl(detail, args)));
    }
}

}  // namespace corvane
