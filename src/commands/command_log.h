// Log lines of command handlers, in the category of their command. Nearly each begins with
// "Client ADDRESS: cmd 'NAME'"; nothing is looked up or formatted for a line whose level is off.
#pragma once

#include <cstdarg>
#include <exception>
#include <log4cpp/Priority.hh>
#include <string>

#include "log/log.h"

namespace corvane {

class CommandLog {
  public:
    /// Keeps references: the client's address (Server::addressOf) and the command's name must live
    /// as long as the log.
    CommandLog(const std::string& address, const std::string& cmd) : address_(address), cmd_(cmd) {}

    /// Only the common beginning.
    void debug() const {
        if (isLogged(log4cpp::Priority::DEBUG)) {
            debug("%s", "");
        }
    }

    /// `detail` is what follows the common beginning, such as ": open file '%s'".
    [[gnu::format(printf, 2, 3)]] void debug(const char* detail, ...) const;
    [[gnu::format(printf, 2, 3)]] void warn(const char* detail, ...) const;
    [[gnu::format(printf, 2, 3)]] void error(const char* detail, ...) const;

    /// The common line for a failed command: "... ERROR: '%s'".
    void failure(const std::exception& e) const { error(": ERROR: '%s'", e.what()); }
    /// The other line for one: the message alone, without the common beginning.
    void reason(const std::exception& e) const;

  private:
    void write(log4cpp::Priority::Value priority, const char* detail, va_list args) const;

    const std::string& address_;
    const std::string& cmd_;
};

}  // namespace corvane
