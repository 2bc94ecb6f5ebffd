// Turns the configuration into a working log4cpp set-up: layout, priority, the console and one log
// file.
#pragma once

#include <log4cpp/Layout.hh>
#include <memory>
#include <string>

#include "fileutil/properties.h"

namespace corvane {

struct Log4cppConfigurator {
    /// Replaces the appenders of the root category. "log4cpp.pattern" is the layout,
    /// "log4cpp.priority" the level. The log file is NAME and PORT with ".log" in the application
    /// directory, or a hidden file of that name in the home directory; it is appended to. With
    /// `console` the lines go to standard error as well. Throws ConfigureFailure for an unknown
    /// priority, and when neither place can be written to.
    static void configure(const std::string& name, const Properties& props, bool console, int port);
};

/// "basic" and "simple" are log4cpp's fixed layouts, any other text is a conversion pattern of its
/// PatternLayout.
std::unique_ptr<log4cpp::Layout> getLayout(const std::string& spec);

}  // namespace corvane
