// Log lines of command handlers. Each begins with "Client ADDRESS: cmd 'NAME'"; nothing is looked
// up or formatted for a line whose level is off.
#pragma once

#include <cstdarg>
#include <exception>
#include <log4cpp/Category.hh>
#include <log4cpp/Priority.hh>
#include <string>

#include "log/log.h"

namespace corvane {

class CommandLog {
  public:
    /// Keeps references: category and command name must live as long as the log.
    CommandLog(log4cpp::Category& category, int sock, const std::string& cmd)
        : category_(category), sock_(sock), cmd_(cmd) {}

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

  private:
    void write(log4cpp::Priority::Value priority, const char* detail, va_list args) const;

    log4cpp::Category& category_;
    int sock_;
    const std::string& cmd_;
};

}  // namespace corvane
