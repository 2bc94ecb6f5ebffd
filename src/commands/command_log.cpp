#include "commands/command_log.h"

#include <array>
#include <cstddef>
#include <log4cpp/Category.hh>

#include "commands/corvane_server.h"
#include "text/strings.h"

namespace corvane {
namespace {

// The category of a command. The logging library finds one by its name under a lock, so it is asked
// once for each.
log4cpp::Category& categoryOf(const std::string& cmd) {
    static std::array<log4cpp::Category*, commandTable.size()> categories{};
    const Command* const command = findCommand(cmd);
    log4cpp::Category*& category =
        categories[static_cast<std::size_t>(command - commandTable.data())];
    if (category == nullptr) {
        category = &log4cpp::Category::getInstance(
            concatenate("corvane.server.process.client.cmd.", command->category));
    }
    return *category;
}

}  // namespace

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

void CommandLog::reason(const std::exception& e) const {
    if (isLogged(log4cpp::Priority::ERROR)) {
        categoryOf(cmd_).error(std::string(e.what()));
    }
}

void CommandLog::write(log4cpp::Priority::Value priority, const char* detail, va_list args) const {
    if (isLogged(priority)) {
        categoryOf(cmd_).log(priority, concatenate("Client ", address_, ": cmd '", cmd_, "'",
                                                   formatvl(detail, args)));
    }
}

}  // namespace corvane
