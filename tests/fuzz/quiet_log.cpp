#include "fuzz/quiet_log.h"

#include <fcntl.h>

#include <log4cpp/Category.hh>
#include <log4cpp/PatternLayout.hh>
#include <memory>

#include "log/log.h"
#include "log/log_file.h"

namespace corvane::fuzz {

QuietLog::QuietLog() {
    auto appender = std::make_unique<LogFile>("null", ::open("/dev/null", O_WRONLY | O_CLOEXEC));
    auto layout = std::make_unique<log4cpp::PatternLayout>();
    layout->setConversionPattern("%d [%p,%c] %m%n");
    appender->setLayout(layout.release());
    LogLevel::set(log4cpp::Priority::DEBUG);
    log4cpp::Category::getRoot().addAppender(appender.release());
}

}  // namespace corvane::fuzz
